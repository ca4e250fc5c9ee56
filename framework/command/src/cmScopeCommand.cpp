#include "framework/command/src/cmScopeCommand.h"

namespace Ko {

RCShdPtr<ScopeCommand> ScopeCommand::create(RCShdPtr<PiUndoScopeTarget> const& target, bool end) {
    return RCShdPtr<ScopeCommand>::create(target, end);
}

LiString ScopeCommand::getDescription() const {
    static LiString const begin = "Scope begin";
    static LiString const end = "Scope end";
    return _end ? end : begin;
}

} // namespace Ko
