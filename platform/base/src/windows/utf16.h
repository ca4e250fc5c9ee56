#pragma once

#include <string>
#include <string_view>

namespace Ko {

/// Text for the system. Bytes that are not UTF-8 become the replacement character.
[[nodiscard]] std::wstring toUtf16(std::string_view text);

/// Text of the system, which need not be well-formed, in UTF-8.
[[nodiscard]] std::string fromUtf16(std::wstring_view text);

} // namespace Ko
