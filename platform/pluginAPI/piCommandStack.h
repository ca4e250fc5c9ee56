#pragma once

#include "base/rcBase.h"
#include "pluginAPI/pluginAPIApi.h"

#include <string>

namespace Ko {

/// The undo history of a document as plug-ins see it. Application thread only.
class KO_PLUGINAPI_API PiCommandStack : public RCBase {
public:
    /// What the stack is doing.
    enum State { Undoing = 0, Redoing = 1, Idle = 2 };

    ~PiCommandStack() override;
    /// Whether a command can be undone.
    [[nodiscard]] virtual bool canUndo() const = 0;
    /// Whether a command can be redone.
    [[nodiscard]] virtual bool canRedo() const = 0;
    /// Unexecutes the current command.
    /// @throws ExAssertionFailed when nothing can be undone; ExInternalError while guards have collected commands for this
    /// stack; and what the command throws.
    virtual void undo() = 0;
    /// Executes the command after the current one.
    /// @throws ExAssertionFailed when nothing can be redone; ExInternalError while guards have collected commands for this
    /// stack; and what the command throws.
    virtual void redo() = 0;
    /// What the stack is doing; `Idle` again when the listeners are called.
    [[nodiscard]] virtual State getState() const = 0;
    /// The name for display.
    [[nodiscard]] virtual std::string const& getName() const = 0;

protected:
    PiCommandStack();
};

} // namespace Ko
