#pragma once

#include <map>
#include <string>

namespace Ko {

/// Reads the values of a configuration file by their keys. Of a key with several values, the last one counts.
/// @param mustExist false: a file that does not exist is empty.
/// @throws InInitEx with the path, and with the number of a line that is not an assignment.
std::map<std::string, std::string> readConfigurationFile(std::string const& path, bool mustExist);

} // namespace Ko
