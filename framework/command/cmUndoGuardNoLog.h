#pragma once

#include "framework/command/cmCommand.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Suspends logging: commands inside are executed but not collected, so they cannot be undone. Closes like `CmUndoGuard`.
class KO_FRAMEWORK_API CmUndoGuardNoLog : public PiUndoGuardProtocol {
public:
    /// @param quiet true: if this is the outermost guard and a guard inside brought a stack, the stack's listeners are not
    /// called at the end.
    [[nodiscard]] explicit CmUndoGuardNoLog(bool quiet);
    ~CmUndoGuardNoLog() noexcept(false) override;

    /// Executes the command.
    virtual void execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Does nothing: the command is dropped.
    virtual void addUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Executes the command.
    virtual void execUndoCommand(RCShdPtr<CmCommand> const& cmd);

private:
    bool _quiet;
};

} // namespace Ko
