#pragma once

#include "resmgt/resmgtApi.h"

#include <cstddef>
#include <string_view>

namespace Ko {

/// The first character of a text in UTF-8.
struct LiUtf8Character {
    /// The number of the character in Unicode.
    char32_t code;
    /// In bytes; 0 where the first byte begins no well-formed character.
    std::size_t length;
};

/// Reads text in UTF-8.
class KO_RESMGT_API LiUtf8 {
public:
    /// The character at the beginning of a text.
    /// @param text not empty.
    [[nodiscard]] static LiUtf8Character first(std::string_view text) noexcept;
};

} // namespace Ko
