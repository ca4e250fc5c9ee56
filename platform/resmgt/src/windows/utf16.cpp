#include "resmgt/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

std::wstring toUtf16(std::string_view text) {
    int const size = static_cast<int>(text.size());
    int const length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), length);
    return result;
}

LiString fromUtf16(std::wstring_view text) {
    int const size = static_cast<int>(text.size());
    int const length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    LiString result(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), length, nullptr, nullptr);
    return result;
}

std::wstring toFullPath(std::wstring const& path) {
    DWORD const size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full.empty() ? path : full;
}

std::wstring toSystemPath(OsFilePath const& path) {
    // The system's limit for folders, which leaves room for a file name of the old form in them.
    constexpr std::size_t longestOrdinary = MAX_PATH - 13;
    std::wstring wide = toUtf16(path.getPath());
    if (wide.size() <= longestOrdinary || wide.starts_with(LR"(\\?\)")) return wide;
    wide = toFullPath(wide);
    return wide.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + wide.substr(1) : LR"(\\?\)" + wide;
}

} // namespace Ko
