#pragma once

#include "base/exBase.h"
#include "base/oPtr.h"

namespace Ko {

/// What `CmCommandStack::tryUndo`, `tryRedo` and `tryMoveTo`, or the taking back of a step by `CmUndoGuard`, did.
struct CmReplay {
    /// How an undo, redo or move ends.
    enum class Outcome {
        Done,        ///< Every command was run.
        NothingToDo, ///< There was no command to run.
        Failed       ///< A command failed, and what became unreliable was dropped.
    };

    /// How the undo, redo or move ended.
    Outcome outcome = Outcome::NothingToDo;
    /// `Failed`: what the command threw; a standard exception comes as an `ExInternalError` with its text. Null otherwise.
    OPtr<ExBase const> error;
    /// `Failed`: how many elements of the history were dropped.
    int numDropped = 0;
};

} // namespace Ko
