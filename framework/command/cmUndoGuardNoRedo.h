#pragma once

#include "framework/command/cmCommand.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Commands that are collected while it is open are undone, but not executed again on redo. It cannot be the outermost
/// guard. Closes like `CmUndoGuard`.
class KO_FRAMEWORK_API CmUndoGuardNoRedo : public PiUndoGuardProtocol {
public:
    CmUndoGuardNoRedo();
    ~CmUndoGuardNoRedo() noexcept(false) override;

    /// As those of `CmUndoGuard`:
    virtual void execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd);
    virtual void addUndoCommand(RCShdPtr<CmCommand> const& cmd);
    virtual void execUndoCommand(RCShdPtr<CmCommand> const& cmd);
};

} // namespace Ko
