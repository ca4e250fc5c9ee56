#include "resmgt/liUtf8.h"

namespace Ko {

namespace {

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
    return code >= smallest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

} // namespace

LiUtf8Character LiUtf8::first(std::string_view text) noexcept {
    unsigned const lead = byteAt(text, 0);
    std::size_t const length = lengthAfter(lead);
    if (length == 0 || text.size() < length) return {0, 0};
    char32_t code = length > 1 ? lead & (0x7FU >> length) : lead;
    for (std::size_t index = 1; index < length; ++index) {
        if ((byteAt(text, index) & 0xC0) != 0x80) return {0, 0};
        code = code << 6 | (byteAt(text, index) & 0x3F);
    }
    if (!isCharacter(code, length)) return {0, 0};
    return {code, length};
}

} // namespace Ko
