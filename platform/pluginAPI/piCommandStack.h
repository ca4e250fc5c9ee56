#pragma once

#include "base/rcBase.h"
#include "pluginAPI/pluginAPIApi.h"

#include <string>

namespace Ko {

/// The undo history of a document as plug-ins see it. Application thread only.
class KO_PLUGINAPI_API PiCommandStack : public RCBase {
public:
    /// What the stack does while a command runs.
    enum State { Undoing = 0, Redoing = 1, Idle = 2 };

    ~PiCommandStack() override;
    /// Whether there is something to undo, or to redo:
    virtual bool canUndo() const = 0;
    virtual bool canRedo() const = 0;
    /// @throws ExAssertionFailed when nothing can be undone, and what the command throws.
    virtual void undo() = 0;
    /// @throws ExAssertionFailed when nothing can be redone, and what the command throws.
    virtual void redo() = 0;
    /// `Idle` again when the listeners are called.
    virtual State getState() const = 0;
    /// For display.
    virtual std::string const& getName() const = 0;

protected:
    PiCommandStack();
};

} // namespace Ko
