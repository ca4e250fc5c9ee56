#pragma once

#include "resmgt/src/posix/descriptor.h"

namespace Ko {

/// The children that live on by themselves while this process runs: lets the system forget each one when it has ended,
/// and reads what it writes to its standard error, so that it never waits. A thread does that while there are any.
class DetachedChildren {
public:
    /// @param process stands for the child. @param error the end of the pipe for reading.
    static void adopt(Descriptor process, Descriptor error);
    /// Ends the thread; the children stay.
    static void finalize();
};

} // namespace Ko
