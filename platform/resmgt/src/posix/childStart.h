#pragma once

#include "resmgt/liString.h"
#include "resmgt/src/posix/lifeline.h"

#include <sys/types.h>

namespace Ko {

/// What a new child is made of.
struct ChildStart {
    Vector<LiString> const& words;
    Vector<LiString> const& environment;
    Descriptor const& input;
    Descriptor const& output;
    Descriptor const& error;
    Lifeline const& lifeline;
};

/// A child that was started; its end is not waited for yet.
struct StartedChild {
    pid_t number = 0;
    Descriptor process;
};

/// Starts the program `words[0]` as the leader of a process group of its own.
/// @returns 0, or the system's number for the reason of the failure; there is no child then.
int startChild(ChildStart const& start, StartedChild& child);

} // namespace Ko
