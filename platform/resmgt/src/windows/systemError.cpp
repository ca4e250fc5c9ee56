#include "resmgt/src/windows/systemError.h"

#include "resmgt/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

LiString describeError(unsigned long error, LiString const& subject) {
    std::wstring text(1024, L'\0');
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    text.resize(::FormatMessageW(flags, nullptr, error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr));
    LiString words = fromUtf16(text);
    words.resize(words.find_last_not_of(" .\r\n") + 1);
    if (words.empty()) return "error " + std::to_string(error);
    if (auto const place = words.find("%1"); place != LiString::npos) words.replace(place, 2, subject);
    return words;
}

LiString describeLastError() {
    return describeError(::GetLastError());
}

} // namespace Ko
