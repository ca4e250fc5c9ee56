#include "framework/command/cmUndoGuardNoLog.h"

#include "framework/command/src/cmUndoGuardStack.h"

namespace Ko {

CmUndoGuardNoLog::CmUndoGuardNoLog(bool quiet) : _quiet(quiet) {
    OpenGuards::getInstance().enter(GuardKind::NoLog);
}

CmUndoGuardNoLog::~CmUndoGuardNoLog() noexcept(false) {
    OpenGuards::leave(_quiet);
}

void CmUndoGuardNoLog::execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().execAndAdd(cmd);
}
void CmUndoGuardNoLog::addUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().add(cmd);
}
void CmUndoGuardNoLog::execUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().exec(cmd);
}

} // namespace Ko
