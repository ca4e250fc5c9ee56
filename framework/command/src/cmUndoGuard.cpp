#include "framework/command/cmUndoGuard.h"

#include "framework/command/src/cmUndoGuardStack.h"

namespace Ko {

CmUndoGuard::CmUndoGuard(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param) {
    UndoGuardStack::getInstance().enter(stack, description, param, UndoGuardStack::Kind::Plain);
}

CmUndoGuard::CmUndoGuard(
    RCShdPtr<CmCommandStack> const& stack, MsgSubscription const& description, PiExecParam const& param)
    : CmUndoGuard(stack, description.format(), param) {}

CmUndoGuard::~CmUndoGuard() noexcept(false) {
    UndoGuardStack::leave(false);
}

void CmUndoGuard::execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().execAndAdd(cmd);
}
void CmUndoGuard::addUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().add(cmd);
}
void CmUndoGuard::execUndoCommand(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::getInstance().exec(cmd);
}

bool CmUndoGuard::isLogging() {
    return UndoGuardStack::getInstance().isLogging();
}
bool CmUndoGuard::isGuardActive() {
    return UndoGuardStack::getInstance().isGuardActive();
}
bool CmUndoGuard::isLongTransition() {
    return UndoGuardStack::getInstance().isLongTransition();
}
bool CmUndoGuard::isLongTransitionEnding() {
    return UndoGuardStack::getInstance().isLongTransitionEnding();
}

void CmUndoGuard::addEndOfOutermostGuardCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& cb) {
    UndoGuardStack::getInstance().addEndCallback(cb);
}

void CmUndoGuard::registerUndoGuardExtension(RCShdPtr<CmUndoGuardExtension> ext) {
    if (ext.isNull()) RCExUtil::throwExNullPtr(typeid(CmUndoGuardExtension).name());
    UndoGuardStack::getInstance().addExtension(std::move(ext));
}

} // namespace Ko
