#include "base/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

std::wstring toUtf16(std::string_view text) {
    int const size = static_cast<int>(text.size());
    int const length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), length);
    return result;
}

std::string fromUtf16(std::wstring_view text) {
    int const size = static_cast<int>(text.size());
    int const length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), length, nullptr, nullptr);
    return result;
}

} // namespace Ko
