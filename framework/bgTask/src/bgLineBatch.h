#pragma once

#include "resmgt/liString.h"

#include <cstddef>
#include <string>

namespace Ko {

/// Lines that are passed on together. Keeps the memory of its strings for the next ones.
class BgLineBatch {
public:
    void add(std::string const& line) {
        if (_count < _lines.size())
            _lines[_count].assign(line);
        else
            _lines.emplace_back(line);
        ++_count;
        _bytes += line.size();
    }
    bool isEmpty() const noexcept { return _count == 0; }
    /// Whether to pass the lines on although more are gathered: bounds the memory, and what a receiver gets at once.
    bool isFull() const noexcept { return _count >= mostLines || _bytes >= mostBytes; }

    /// Calls `receive` with the lines, unless there is none, and is empty again.
    template <class Receive>
    void pass(Receive const& receive) {
        if (_count == 0) return;
        _lines.resize(_count);
        _count = 0;
        _bytes = 0;
        receive(_lines);
    }

private:
    static constexpr std::size_t mostLines = 65536;
    static constexpr std::size_t mostBytes = std::size_t{4} << 20;

    // The first `_count` of them are lines.
    Vector<std::string> _lines;
    std::size_t _count = 0;
    std::size_t _bytes = 0;
};

} // namespace Ko
