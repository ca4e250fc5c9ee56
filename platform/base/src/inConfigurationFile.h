#pragma once

#include <map>
#include <string>

namespace Ko {

/// Reads the values of a configuration file by their keys. Of a key that stands there twice, the last value counts.
/// @param mustExist false: a file that does not exist is empty.
/// @throws InInitEx with the path, and the line of what is no assignment.
std::map<std::string, std::string> readConfigurationFile(std::string const& path, bool mustExist);

} // namespace Ko
