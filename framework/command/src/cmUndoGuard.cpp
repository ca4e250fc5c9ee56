#include "framework/command/cmUndoGuard.h"

#include "framework/command/src/cmUndoGuardStack.h"

namespace Ko {

CmUndoGuard::CmUndoGuard(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param) {
    UndoGuardStack::getInstance().enter(stack, description, param);
}

CmUndoGuard::CmUndoGuard(
    RCShdPtr<CmCommandStack> const& stack, MsgSubscription const& description, PiExecParam const& param) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    guards.enter(stack, description.format(), param);
}

CmUndoGuard::~CmUndoGuard() noexcept(false) {
    OpenGuards::leave(false);
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
    return OpenGuards::getInstance().getState().isActive();
}
bool CmUndoGuard::isLongTransition() {
    return OpenGuards::getInstance().getState().isLongTransition();
}
bool CmUndoGuard::isLongTransitionEnding() {
    return OpenGuards::getInstance().getState().isLongTransitionEnding();
}

void CmUndoGuard::addEndOfOutermostGuardCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& cb) {
    UndoGuardStack::getInstance().addEndCallback(cb);
}

void CmUndoGuard::registerUndoGuardExtension(RCShdPtr<CmUndoGuardExtension> ext) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    if (ext.isNull()) RCExUtil::throwExNullPtr(typeid(CmUndoGuardExtension).name());
    guards.addExtension(std::move(ext));
}

} // namespace Ko
