#pragma once

#include "resmgt/liString.h"
#include "resmgt/osFilePath.h"

#include <string>
#include <string_view>

namespace Ko {

/// Text for the system. Bytes that are not UTF-8 become the replacement character.
[[nodiscard]] std::wstring toUtf16(std::string_view text);

/// Text of the system, which need not be well-formed, in UTF-8.
[[nodiscard]] LiString fromUtf16(std::wstring_view text);

/// A path for the system. Paths that are too long for the system's ordinary functions get the prefix that lifts the limit.
[[nodiscard]] std::wstring toSystemPath(OsFilePath const& path);

/// The path of the system with its drive or server, and with the system's own separators.
[[nodiscard]] std::wstring toFullPath(std::wstring const& path);

} // namespace Ko
