#pragma once

#include "resmgt/liString.h"
#include "resmgt/src/posix/lifeline.h"

#include <sys/types.h>

namespace Ko {

/// The parts of a new child.
struct ChildStart {
    Vector<LiString> const& words;
    Vector<LiString> const& environment;
    Descriptor const& input;
    Descriptor const& output;
    Descriptor const& error;
    /// One that is not open lets the child outlive this process.
    Lifeline const& lifeline;
    /// Empty for the current one.
    LiString const& folder;
};

/// Why a child was not started.
struct StartProblem {
    /// An error number; 0 when it was started.
    int error = 0;
    bool isOfFolder = false;
};

/// A child that was started and not reaped yet.
struct StartedChild {
    pid_t number = 0;
    /// A pidfd.
    Descriptor process;
};

/// Starts the program `words[0]` as the leader of a process group of its own.
/// @returns the problem; there is no child then.
[[nodiscard]] StartProblem startChild(ChildStart const& start, StartedChild& child);

} // namespace Ko
