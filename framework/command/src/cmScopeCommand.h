#pragma once

#include "framework/command/cmCommand.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Marks the begin or the end of a scope of commands. Its execution and unexecution call the scope's target.
class ScopeCommand : public CmCommand {
public:
    static RCShdPtr<ScopeCommand> create(RCShdPtr<PiUndoScopeTarget> const& target, bool end);

    LiString getDescription() const override;

protected:
    void executeInternal() override { _target->scopeReached(_end); }
    // An undo unexecutes the end mark first, so the scope begins there.
    void unexecuteInternal() override { _target->scopeReached(!_end); }

private:
    friend class RCShdPtr<ScopeCommand>;

    ScopeCommand(RCShdPtr<PiUndoScopeTarget> const& target, bool end) : _target(target), _end(end) {}

    RCShdPtr<PiUndoScopeTarget> _target;
    bool _end;
};

} // namespace Ko
