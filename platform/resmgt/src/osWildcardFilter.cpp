#include "resmgt/osWildcardFilter.h"

namespace Ko {

namespace {

constexpr char32_t strayBytes = 0x110000;

unsigned byteAt(std::string_view text, std::size_t index) noexcept {
    return static_cast<unsigned char>(text[index]);
}

// 0 for what begins no character.
std::size_t lengthAfter(unsigned lead) noexcept {
    if (lead < 0x80) return 1;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// Neither a character that needs fewer bytes, nor half of a surrogate pair, nor one above all characters.
bool isCharacter(char32_t code, std::size_t length) noexcept {
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    return code >= smallest[length] && code < strayBytes && (code < 0xD800 || code > 0xDFFF);
}

// Takes the first character off a text that is not empty.
char32_t next(std::string_view& text) noexcept {
    unsigned const lead = byteAt(text, 0);
    std::size_t const length = lengthAfter(lead);
    bool isWhole = length != 0 && text.size() >= length;
    char32_t code = length > 1 ? lead & (0x7FU >> length) : lead;
    for (std::size_t index = 1; isWhole && index < length; ++index) {
        isWhole = (byteAt(text, index) & 0xC0) == 0x80;
        code = code << 6 | (byteAt(text, index) & 0x3F);
    }
    isWhole = isWhole && isCharacter(code, length);
    text.remove_prefix(isWhole ? length : 1);
    return isWhole ? code : strayBytes + lead;
}

std::u32string decoded(std::string_view text) {
    std::u32string result;
    while (!text.empty())
        result += next(text);
    return result;
}

} // namespace

OsWildcardFilter::OsWildcardFilter(std::wstring const& pattern) : _pattern(pattern.begin(), pattern.end()) {}
OsWildcardFilter::OsWildcardFilter(LiString const& pattern) : _pattern(decoded(pattern)) {}

// Where a character does not fit, only the last star has to take one more: what those before it took can stay.
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
