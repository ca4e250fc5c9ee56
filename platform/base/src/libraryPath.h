#pragma once

#include <string>

namespace Ko {

/// The absolute path of the file that this library was loaded from.
std::string baseLibraryPath();

/// Tells the libraries apart in which static objects lie; null for an object that lies in none.
void const* libraryOf(void const* object) noexcept;

} // namespace Ko
