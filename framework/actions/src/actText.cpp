#include "framework/actions/src/actText.h"

namespace Ko {

namespace {

bool isBetween(char32_t character, char32_t first, char32_t last) noexcept {
    return character >= first && character <= last;
}

// Blocks in which each capital with an even number comes right before its small letter.
bool isInPairs(char32_t character) noexcept {
    return isBetween(character, 0x100, 0x137) || isBetween(character, 0x14A, 0x177) ||
           isBetween(character, 0x460, 0x481) || isBetween(character, 0x48A, 0x4BF) ||
           isBetween(character, 0x4D0, 0x52F) || isBetween(character, 0x1E00, 0x1EFF);
}

// The same with odd numbers.
bool isInOddPairs(char32_t character) noexcept {
    return isBetween(character, 0x139, 0x148) || isBetween(character, 0x179, 0x17E);
}

} // namespace

char32_t ActText::fold(char32_t character) noexcept {
    if (character < 0x80) return isBetween(character, 'A', 'Z') ? character + 32 : character;
    bool const isShiftedBy32 = (isBetween(character, 0xC0, 0xDE) && character != 0xD7) ||
                               isBetween(character, 0x391, 0x3A9) || isBetween(character, 0x410, 0x42F);
    if (isShiftedBy32) return character + 32;
    if (isBetween(character, 0x400, 0x40F)) return character + 80;
    if (isInPairs(character)) return character | 1u;
    return isInOddPairs(character) && character % 2 == 1 ? character + 1 : character;
}

} // namespace Ko
