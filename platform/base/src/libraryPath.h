#pragma once

#include <string>

namespace Ko {

/// The absolute path of the file that this library was loaded from.
[[nodiscard]] std::string baseLibraryPath();

/// Identifies the library in which a static object lies; null for an object that lies in none.
[[nodiscard]] void const* libraryOf(void const* object) noexcept;

} // namespace Ko
