#pragma once

#include "resmgt/liUtf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Ko {

/// Reads UTF-8 character by character. A byte that belongs to no character counts as one of its own.
class ActText {
public:
    /// Stands for such a byte: no character of Unicode.
    static constexpr char32_t invalid = 0xFFFFFFFF;

    explicit ActText(std::string_view text) noexcept : _text(text) {}

    bool isAtEnd() const noexcept { return _position == _text.size(); }
    /// Where the next character begins, in bytes.
    std::size_t getPosition() const noexcept { return _position; }
    /// The next character; there must be one.
    char32_t next() noexcept {
        auto const [code, length] = LiUtf8::first(_text.substr(_position));
        _position += std::max<std::size_t>(length, 1);
        return length > 0 ? code : invalid;
    }

    /// The character without case: Latin, Greek and Cyrillic letters as small ones, others as they are.
    static char32_t fold(char32_t character) noexcept;

private:
    std::string_view _text;
    std::size_t _position = 0;
};

} // namespace Ko
