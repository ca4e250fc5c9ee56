#pragma once

#include "framework/command/cmCommand.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Suspends redo: commands that are collected inside are undone with the step, but not executed again when it is redone.
/// It cannot be the outermost guard. Closes like `CmUndoGuard`.
class KO_FRAMEWORK_API CmUndoGuardNoRedo : public PiUndoGuardProtocol {
public:
    [[nodiscard]] CmUndoGuardNoRedo();
    ~CmUndoGuardNoRedo() noexcept(false) override;

    /// Executes the command and collects it.
    virtual void execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Collects a command that the caller has performed.
    virtual void addUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Executes the command without collecting it.
    virtual void execUndoCommand(RCShdPtr<CmCommand> const& cmd);
};

} // namespace Ko
