#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Ko {

/// Makes lines of what comes in pieces.
class BgLines {
public:
    /// Hands each line that ends in the piece to `handleLine`, without "\n" or "\r\n"; keeps what follows.
    template <class HandleLine>
    void add(std::string_view piece, HandleLine const& handleLine) {
        if (!_unfinished.empty()) piece = finishLine(piece, handleLine);
        if (!piece.empty()) _unfinished += cutLines(piece, handleLine);
    }

    std::string const& getUnfinished() const noexcept { return _unfinished; }

private:
    using Word = std::uint64_t;
    static constexpr std::ptrdiff_t wordSize = sizeof(Word);
    static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");

    // The line that began in a piece before. Returns what follows it.
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

    // Looks for the ends of several short lines at once, because a search for each costs more than all the rest; the end of
    // a long line is found faster by the library. Returns what follows the last end.
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

    // Returns where the next line begins.
    template <class HandleLine>
    char const* cutLine(char const* begin, char const* end, HandleLine const& handleLine) {
        _line.assign(begin, end != begin && end[-1] == '\r' ? end - 1 : end);
        handleLine(_line);
        return end + 1;
    }

    // A word with the highest bit of those bytes set that end a line.
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
