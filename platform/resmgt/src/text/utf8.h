#pragma once

#include <cstddef>
#include <string_view>

namespace Ko {

/// What a text in UTF-8 begins with.
struct Utf8Character {
    char32_t code;
    /// In bytes; 0 where the first byte begins no well-formed character.
    std::size_t length;
};

/// @param text not empty.
Utf8Character firstCharacter(std::string_view text) noexcept;

} // namespace Ko
