#pragma once

#include "resmgt/liString.h"
#include "resmgt/src/windows/handle.h"

namespace Ko {

/// The parts of a new child.
struct ChildStart {
    LiString const& commandLine;
    Vector<LiString> const& environment;
    Handle const& input;
    Handle const& output;
    Handle const& error;
    /// The job object that it belongs to from its start on.
    Handle const& job;
    /// Empty for the current one.
    LiString const& folder;
};

/// A child that was started.
struct StartedChild {
    Handle process;
    DWORD number = 0;
};

/// A job object whose processes end when its last handle is closed: also when this process is killed.
/// @returns one that is not open when the system fails; the last error says why.
[[nodiscard]] Handle createJob() noexcept;

/// Lets the processes of a job object outlive its last handle.
void releaseJob(Handle const& job) noexcept;

/// Starts a program in a process group of its own, with the lowest priority. It inherits the three streams and nothing else.
/// @returns the system's error; 0 when it was started.
[[nodiscard]] DWORD startChild(ChildStart const& start, StartedChild& child);

} // namespace Ko
