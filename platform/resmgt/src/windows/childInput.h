#pragma once

#include "resmgt/src/windows/pipe.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace Ko {

/// The write end of the pipe that is a child's standard input. The bytes of a write that the pipe has no space for are kept here, and
/// count as written.
class ChildInput {
public:
    /// @param writeEnd for overlapped operations.
    void open(Handle writeEnd);
    /// @returns how many bytes were taken; nothing when the pipe has no reader any more, or was closed.
    std::optional<std::size_t> write(std::string_view bytes);
    /// Closes the pipe, after the bytes that were taken.
    void close() noexcept;
    /// Closes the pipe now.
    void drop() noexcept;

    /// Looks whether the write that went on has ended.
    void update() noexcept;
    /// To wait for, until the child has read more; null while nothing is kept.
    HANDLE getFull() const noexcept { return _operation.isStarted() ? _operation.event() : nullptr; }

private:
    // The operation is cancelled before its buffer and its pipe go.
    std::unique_ptr<char[]> _kept;
    Handle _pipe;
    PipeOperation _operation;
    bool _isToClose = false;
};

} // namespace Ko
