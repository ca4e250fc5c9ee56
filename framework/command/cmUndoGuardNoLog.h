#pragma once

#include "framework/command/cmCommand.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// While it is open nothing is collected: commands are executed but cannot be undone. Closes like `CmUndoGuard`.
class KO_FRAMEWORK_API CmUndoGuardNoLog : public PiUndoGuardProtocol {
public:
    /// @param quiet when this is the outermost guard and a stack was attached within it: whether the stack's listeners
    /// are not told, at its end, that the document changed.
    explicit CmUndoGuardNoLog(bool quiet);
    ~CmUndoGuardNoLog() noexcept(false) override;

    /// As those of `CmUndoGuard`; nothing is collected:
    virtual void execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd);
    virtual void addUndoCommand(RCShdPtr<CmCommand> const& cmd);
    virtual void execUndoCommand(RCShdPtr<CmCommand> const& cmd);

private:
    bool _quiet;
};

} // namespace Ko
