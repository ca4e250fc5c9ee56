#pragma once

#include "resmgt/src/windows/pipe.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace Ko {

/// The read end of the pipe that is a child's standard error.
class ChildErrors {
public:
    /// @param readEnd for overlapped operations.
    void open(Handle readEnd);
    void close() noexcept;

    /// How many bytes wait.
    /// @returns false when the system call fails.
    bool peek(std::size_t& waiting) noexcept;
    /// The next bytes, at most so many; valid up to the next call. Does not wait.
    std::string_view read(std::size_t size) noexcept;

    /// To wait for, until the child writes or the pipe has no writer any more; null once it has none, or while bytes wait. The system
    /// announces bytes only to a read that goes on, so this reads the first of them.
    HANDLE announce() noexcept;

private:
    void update() noexcept;

    // The operation is cancelled before its buffer and its pipe go.
    std::array<char, 1024> _ahead;
    std::array<char, 1024> _given;
    std::string_view _ready;
    Handle _pipe;
    PipeOperation _operation;
    bool _hasWriter = false;
};

} // namespace Ko
