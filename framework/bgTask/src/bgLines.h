#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Ko {

/// Splits a text that arrives in pieces into lines.
class BgLines {
public:
    /// Calls `handleLine` with each line that ends in the piece, without "\n" or "\r\n". Keeps the unfinished rest.
    template <class HandleLine>
    void add(std::string_view piece, HandleLine const& handleLine) {
        if (!_unfinished.empty()) piece = finishLine(piece, handleLine);
        if (!piece.empty()) _unfinished += cutLines(piece, handleLine);
    }

    /// The text after the last line end.
    std::string const& getUnfinished() const noexcept { return _unfinished; }

private:
    using Word = std::uint64_t;
    static constexpr std::ptrdiff_t wordSize = sizeof(Word);
    static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");

    // Completes the line that began in a previous piece. Returns the text after it.
    template <class HandleLine>
    std::string_view finishLine(std::string_view piece, HandleLine const& handleLine) {
        auto const length = piece.find('\n');
        _unfinished += piece.substr(0, length);
        if (length == std::string_view::npos) return {};
        _line.swap(_unfinished);
        _unfinished.clear();
        if (_line.back() == '\r') _line.pop_back();
        handleLine(_line);
        return piece.substr(length + 1);
    }

    // Finds the ends of several short lines in one word, because a search per line would dominate the cost; `memchr` is
    // faster for long lines. Returns the text after the last line end.
    template <class HandleLine>
    std::string_view cutLines(std::string_view text, HandleLine const& handleLine) {
        char const* begin = text.data();
        char const* const end = begin + text.size();
        for (char const* searched = begin;; searched = begin) {
            for (; end - searched >= wordSize; searched += wordSize) {
                Word ends = findEnds(searched);
                if (ends == 0) break;
                for (; ends != 0; ends &= ends - 1)
                    begin = cutLine(begin, searched + countBytesBefore(ends), handleLine);
            }
            auto const rest = static_cast<std::size_t>(end - searched);
            auto const lineEnd = static_cast<char const*>(std::memchr(searched, '\n', rest));
            if (!lineEnd) return {begin, static_cast<std::size_t>(end - begin)};
            begin = cutLine(begin, lineEnd, handleLine);
        }
    }

    // Returns the start of the next line.
    template <class HandleLine>
    char const* cutLine(char const* begin, char const* end, HandleLine const& handleLine) {
        _line.assign(begin, end != begin && end[-1] == '\r' ? end - 1 : end);
        handleLine(_line);
        return end + 1;
    }

    // Sets the highest bit of each byte that is a line end, and clears all other bits.
    static Word findEnds(char const* bytes) noexcept {
        constexpr Word lineEnds = 0x0A0A0A0A0A0A0A0A;
        constexpr Word lowBits = 0x7F7F7F7F7F7F7F7F;
        Word word;
        std::memcpy(&word, bytes, sizeof word);
        word ^= lineEnds;
        return ~(((word & lowBits) + lowBits) | word | lowBits);
    }

    static int countBytesBefore(Word ends) noexcept { return std::countr_zero(ends) / 8; }

    std::string _unfinished;
    std::string _line;
};

} // namespace Ko
