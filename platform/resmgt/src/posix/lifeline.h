#pragma once

#include "resmgt/src/posix/descriptor.h"

#include <sys/types.h>

namespace Ko {

/// Ends a process group when this process ends, however that happens: a pipe that only this process holds. The system
/// sends the signal that ends the group when it closes the first of the two ends.
class Lifeline {
public:
    /// @returns false when the system has no more pipes.
    bool open() noexcept;
    /// Called by the leader of the group that is to be ended, in its first moments; calls the system only.
    void tieTo(pid_t leader) const noexcept;
    /// Lets the group live on.
    void cut() noexcept;

private:
    Pipe _pipe;
};

} // namespace Ko
