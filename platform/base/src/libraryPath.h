#pragma once

#include <string>

namespace Ko {

/// The absolute path of the file that this library was loaded from.
std::string baseLibraryPath();

} // namespace Ko
