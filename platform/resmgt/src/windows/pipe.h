#pragma once

#include "resmgt/src/windows/handle.h"

namespace Ko {

/// A pipe between this process and a child. The system's anonymous pipes cannot be waited for, so it is a named one, whose name is
/// used once.
struct Pipe {
    enum class Direction { ToChild, FromChild };

    /// @returns a pipe without ends when the system fails; the last error says why.
    static Pipe create(Direction direction) noexcept;
    bool isOpen() const noexcept { return own.isOpen() && ofChild.isOpen(); }

    /// For overlapped operations.
    Handle own;
    /// Inheritable; for ordinary operations, which wait.
    Handle ofChild;
};

/// An operation on a pipe that may still go on, and the event that announces its end. Its buffer must live as long.
class PipeOperation {
public:
    PipeOperation() noexcept;
    /// Cancels the operation, and waits until the system uses the buffer no more.
    ~PipeOperation() { cancel(); }
    PipeOperation(PipeOperation const&) = delete;
    PipeOperation& operator=(PipeOperation const&) = delete;

    /// Starts reading or writing; both return whether the system took the order.
    bool read(HANDLE pipe, void* buffer, DWORD size) noexcept;
    bool write(HANDLE pipe, void const* bytes, DWORD size) noexcept;
    /// Whether the operation still goes on. If not, `count` is what it has read or written, and `succeeded` how it ended.
    bool goesOn(DWORD& count, bool& succeeded) noexcept;
    void cancel() noexcept;

    bool isStarted() const noexcept { return _pipe != nullptr; }
    /// To wait for; set when the operation has ended.
    HANDLE event() const noexcept { return _event.get(); }

private:
    OVERLAPPED& prepare() noexcept;
    bool note(HANDLE pipe, BOOL isDone) noexcept;

    Handle _event;
    OVERLAPPED _state{};
    // Null while nothing goes on.
    HANDLE _pipe = nullptr;
};

} // namespace Ko
