#pragma once

#include "resmgt/src/posix/descriptor.h"

namespace Ko {

/// Keeps detached children from becoming zombies, and from being ended or blocked when they write to standard error.
///
/// A thread collects the exit status of each child. It runs only while there are detached children.
class DetachedChildren {
public:
    /// @param process the pidfd of the child.
    static void adopt(Descriptor process);
    /// Starts a program that reads a child's standard error and drops it up to its end, also after the end of this
    /// process. Without such a reader the system ends the child by SIGPIPE at its next error.
    /// @param error the read end of the pipe.
    static void drain(Descriptor const& error);
    /// Ends the thread; the children stay.
    static void finalize();
};

} // namespace Ko
