#include "framework/command/cmUndoGuardNoRedo.h"

#include "framework/command/src/cmUndoGuardStack.h"

namespace Ko {

CmUndoGuardNoRedo::CmUndoGuardNoRedo() {
    OpenGuards::getInstance().enter(GuardKind::NoRedo);
}

CmUndoGuardNoRedo::~CmUndoGuardNoRedo() noexcept(false) {
    OpenGuards::leave(false);
}

void CmUndoGuardNoRedo::execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().execAndAdd(cmd);
}
void CmUndoGuardNoRedo::addUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().add(cmd);
}
void CmUndoGuardNoRedo::execUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().exec(cmd);
}

} // namespace Ko
