#pragma once

#include "resmgt/src/posix/descriptor.h"

#include <sys/types.h>

namespace Ko {

/// Kills a process group when this process ends, in whatever way: a pipe whose ends only this process holds. When the
/// system closes the first end, the other end sends the signal.
class Lifeline {
public:
    /// @returns false when the system cannot create a pipe; `errno` says why.
    bool open() noexcept;
    /// Called by the leader of the group before its program starts. Makes system calls only.
    void tieTo(pid_t leader) const noexcept;
    /// Lets the group outlive this process.
    void cut() noexcept;

private:
    Pipe _pipe;
};

} // namespace Ko
