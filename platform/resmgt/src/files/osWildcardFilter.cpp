#include "resmgt/osWildcardFilter.h"

#include "resmgt/liUtf8.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr char32_t strayBytes = 0x110000;

// Removes the first character of a text that is not empty.
char32_t next(std::string_view& text) noexcept {
    auto const [code, length] = LiUtf8::first(text);
    char32_t const taken = length > 0 ? code : strayBytes + static_cast<unsigned char>(text[0]);
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return taken;
}

std::u32string decoded(std::string_view text) {
    std::u32string result;
    while (!text.empty())
        result += next(text);
    return result;
}

// Where wide characters have 16 bits, two of them stand for a character above U+FFFF.
std::u32string decoded(std::wstring const& text) {
    std::u32string result;
    for (wchar_t const unit : text) {
        auto const code = static_cast<char32_t>(unit);
        bool const isSecond =
            (code & 0xFFFFFC00) == 0xDC00 && !result.empty() && (result.back() & 0xFFFFFC00) == 0xD800;
        if (isSecond)
            result.back() = 0x10000 + ((result.back() & 0x3FF) << 10) + (code & 0x3FF);
        else
            result += code;
    }
    return result;
}

} // namespace

OsWildcardFilter::OsWildcardFilter(std::wstring const& pattern) : _pattern(decoded(pattern)) {}
OsWildcardFilter::OsWildcardFilter(LiString const& pattern) : _pattern(decoded(pattern)) {}

// When a character does not match, only the last star has to match one more: the matches of earlier stars stay valid.
bool OsWildcardFilter::matches(std::string_view name) const noexcept {
    std::size_t index = 0;
    std::size_t afterStar = std::u32string::npos;
    std::string_view retry;
    while (!name.empty()) {
        if (index < _pattern.size() && _pattern[index] == U'*') {
            afterStar = ++index;
            retry = name;
            continue;
        }
        char32_t const character = next(name);
        if (index < _pattern.size() && (_pattern[index] == U'?' || _pattern[index] == character)) {
            ++index;
        } else {
            if (afterStar == std::u32string::npos) return false;
            next(retry);
            name = retry;
            index = afterStar;
        }
    }
    return _pattern.find_first_not_of(U'*', index) == std::u32string::npos;
}

} // namespace Ko
