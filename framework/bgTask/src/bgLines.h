#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace Ko {

/// Makes lines of what comes in pieces.
class BgLines {
public:
    /// Hands each line that ends in the piece to `handleLine`, without "\n" or "\r\n"; keeps what follows.
    template <class HandleLine>
    void add(std::string_view piece, HandleLine handleLine) {
        char const* begin = piece.data();
        char const* const end = begin + piece.size();
        while (char const* const lineEnd = find(begin, end)) {
            handleLine(take(begin, lineEnd));
            begin = lineEnd + 1;
        }
        _unfinished.append(begin, end);
    }

    std::string const& getUnfinished() const noexcept { return _unfinished; }

private:
    // Most lines are short; for those the library's search costs more than it saves.
    static char const* find(char const* begin, char const* end) noexcept {
        constexpr std::ptrdiff_t fewBytes = 8;
        char const* const near = end - begin < fewBytes ? end : begin + fewBytes;
        for (; begin != near; ++begin)
            if (*begin == '\n') return begin;
        return static_cast<char const*>(std::memchr(begin, '\n', static_cast<std::size_t>(end - begin)));
    }

    std::string const& take(char const* begin, char const* end) {
        if (_unfinished.empty()) {
            _line.assign(begin, end);
        } else {
            _line.swap(_unfinished);
            _line.append(begin, end);
            _unfinished.clear();
        }
        if (!_line.empty() && _line.back() == '\r') _line.pop_back();
        return _line;
    }

    std::string _unfinished;
    std::string _line;
};

} // namespace Ko
