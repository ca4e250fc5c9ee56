#include "framework/command/cmUndoGuard.h"

#include "framework/command/src/cmUndoGuardStack.h"

#include <utility>

namespace Ko {

CmUndoGuard::CmUndoGuard(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    enter(guards, stack, description, param);
}

CmUndoGuard::CmUndoGuard(
    RCShdPtr<CmCommandStack> const& stack, MsgSubscription const& description, PiExecParam const& param) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    enter(guards, stack, description.format(), param);
}

// What begin hooks collect belongs to this guard.
void CmUndoGuard::enter(UndoGuardStack& guards, RCShdPtr<CmCommandStack> const& stack, LiString const& description,
    PiExecParam const& param) {
    _numCollectedBefore = guards.getMark().numCollected;
    guards.enter(stack, description, param);
    _nestingLevel = guards.getMark().nestingLevel;
}

CmReplay CmUndoGuard::rollBack() {
    return UndoGuardStack::getInstance().rollBack({_numCollectedBefore, _nestingLevel});
}

CmReplay CmUndoGuard::abandonLongTransition() {
    return UndoGuardStack::getInstance().abandonLongTransition();
}

void CmUndoGuard::callOutside(std::function<void()> action) {
    UndoGuardStack::getInstance().callOutside(std::move(action));
}

CbSubscription CmUndoGuard::onTransaction(std::function<void(bool)> callable) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    CbSubscription subscription =
        guards.getHooks().transactions.subscribe([callable = std::move(callable)](bool began) { callable(began); });
    guards.updateWork();
    return subscription;
}

CbSubscription CmUndoGuard::onEndOfOutermostGuard(std::function<void()> callable) {
    UndoGuardStack& guards = UndoGuardStack::getInstance();
    CbSubscription subscription = guards.getHooks().endings.subscribe(std::move(callable));
    guards.updateWork();
    return subscription;
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
