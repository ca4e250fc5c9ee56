#include "framework/command/cmCommandStack.h"

#include "framework/command/src/cmHistoryKeeper.h"
#include "resmgt/lgFirstError.h"

#include <utility>

namespace Ko {

void CmCommandStack::addCommandProcessedCallback(CbHandler<CbEmptyType>* handler) {
    _commandProcessedCallbacks.add(handler);
}
void CmCommandStack::removeCommandProcessedCallback(CbHandler<CbEmptyType>* handler) {
    _commandProcessedCallbacks.remove(handler);
}
void CmCommandStack::addChangeCallback(CbHandler<CbEmptyType>* handler) {
    _changeCallbacks.add(handler);
}
void CmCommandStack::removeChangeCallback(CbHandler<CbEmptyType>* handler) {
    _changeCallbacks.remove(handler);
}

CbSubscription CmCommandStack::onHistoryChange(std::function<void(CmHistoryChange const&)> callable) {
    // Undo and redo allocate nothing then.
    getKeeper().makeRoom();
    return _keeper->changes.subscribe(std::move(callable));
}
CbSubscription CmCommandStack::onCleanChange(std::function<void()> callable) {
    return getKeeper().cleanChanges.subscribe(std::move(callable));
}
CbSubscription CmCommandStack::onCommandProcessed(std::function<void()> callable) {
    return _commandProcessedCallbacks.subscribe(std::move(callable));
}
CbSubscription CmCommandStack::onChange(std::function<void()> callable) {
    return _changeCallbacks.subscribe(std::move(callable));
}

CmCommandStack::Keeper& CmCommandStack::getKeeper() {
    if (!_keeper) _keeper = std::make_unique<Keeper>(*this);
    return *_keeper;
}

// The stack is not used after the last listeners were called: one of them may have released its last owner. During the delivery of a
// change, the listeners are postponed until all changes are delivered.
void CmCommandStack::notify(bool isProcessed, bool isLast) {
    LgFirstError error("A listener of the command stack");
    if (_keeper) [[unlikely]]
        notifyWithChanges(isProcessed, isLast, error);
    else
        callListeners(isProcessed, error);
    error.rethrow();
}

void CmCommandStack::notifyWithChanges(bool isProcessed, bool isLast, LgFirstError& error) {
    if (_keeper->isDelivering()) return _keeper->postpone(isProcessed);
    if (isLast && !_keeper->deliver(error)) return;
    while (callListeners(isProcessed, error) && _keeper->takePostponed(isProcessed)) {
    }
}

// @returns whether the stack still exists.
bool CmCommandStack::callListeners(bool isProcessed, LgFirstError& error) {
    if (isProcessed && !_commandProcessedCallbacks.isEmpty() && !_commandProcessedCallbacks.call({}, error))
        return false;
    return _changeCallbacks.call({}, error);
}

void CmCommandStack::deliverChanges() {
    if (!_keeper || _keeper->isDelivering()) return;
    LgFirstError error("A listener of the command stack");
    bool isProcessed = false;
    if (_keeper->deliver(error) && _keeper->takePostponed(isProcessed)) notifyWithChanges(isProcessed, false, error);
    error.rethrow();
}

} // namespace Ko
