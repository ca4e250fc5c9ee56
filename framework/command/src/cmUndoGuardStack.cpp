#include "framework/command/src/cmUndoGuardStack.h"

#include "framework/command/src/cmLog.h"

#include <exception>
#include <typeinfo>
#include <utility>

namespace Ko {

OPtr<UndoGuardStack> UndoGuardStack::_owned;

void UndoGuardStack::initialize() {
    guardSource.require(_owned == nullptr, "undoGuardStack == 0");
    _owned = std::make_unique<UndoGuardStack>();
    setInstance(_owned.get());
}

void UndoGuardStack::finalize() {
    guardSource.require(_owned != nullptr, "undoGuardStack != 0");
    setInstance(nullptr);
    if (_owned->_state.isActive())
        CmLog::writeLine(
            CmLog::unexpectedFailure, [] { return "An undo guard or a long transaction is never closed."; });
    if (std::size_t const lost = _owned->_hooks.getNumOutside(); lost > 0)
        CmLog::writeLine(CmLog::unexpectedFailure, [lost] {
            return "Actions that wait for the end of a transaction are never called: " + std::to_string(lost);
        });
    _owned.reset();
}

void UndoGuardStack::enter(
    RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param) {
    GuardState const around = _state;
    _state.enter(param.get(), GuardKind::Plain);
    StepCollector::Attachment attachment(_collector);
    try {
        attach(attachment, stack, description);
        if (_state.isOutermost()) {
            _exceptionsAtEntry = std::uncaught_exceptions();
            _hooks.begin(_state.isLongTransition());
        }
        updateWork();
    } catch (...) {
        takeBack(around, attachment);
        throw;
    }
    if (!around.isActive() && !_hooks.transactions.isEmpty()) [[unlikely]]
        beginTransaction();
}

void UndoGuardStack::beginTransaction() {
    LgFirstError error("A listener of transactions");
    _hooks.notifyTransaction(true, error);
    error.log();
}

// The actions are called one after the other, also where one of them opens and closes guards. After one that opens a long
// transaction the others wait for its end.
void UndoGuardStack::endTransaction(LgFirstError& error) {
    _hooks.notifyTransaction(false, error);
    while (!_state.isActive() && !_isCallingOutside && _hooks.getNumOutside() > 0) {
        std::function<void()> const action = _hooks.takeOutside();
        _isCallingOutside = true;
        error.capture([&action] { action(); });
        _isCallingOutside = false;
    }
    updateWork();
}

void UndoGuardStack::attach(
    StepCollector::Attachment& attachment, RCShdPtr<CmCommandStack> const& stack, LiString const& description) {
    RCShdPtr<CmCommandStack> const& target = _collector.getStack();
    if (!target && stack) {
        attachment.adopt(stack);
        if (isLogging()) attachment.describe(description);
    }
    if (_state.isOutermost() && _state.renamesTransaction() && target && !description.empty())
        attachment.describe(description);
    if (stack && isLogging() && _state.permitsRedo()) guardSource.require(stack == target, "stack == _stack");
    if (!target) guardSource.require(_collector.isEmpty(), "! (_stack.isNull() && !_macroCmd->isEmpty() )");
}

void UndoGuardStack::beginOutermost(GuardKind kind) {
    GuardState const around = _state;
    _state.enter(PiExecParam::NOT_TRANSITION, kind);
    StepCollector::Attachment attachment(_collector);
    try {
        _exceptionsAtEntry = std::uncaught_exceptions();
        _hooks.begin(_state.isLongTransition());
    } catch (...) {
        takeBack(around, attachment);
        throw;
    }
}

// What begin hooks executed before one of them failed stays undoable: as a step of its own, or as a part of the long
// transaction that is in progress.
void UndoGuardStack::takeBack(GuardState const& around, StepCollector::Attachment& attachment) noexcept {
    LgFirstError error("The failed opening of an undo guard");
    RCShdPtr<CmCommandStack> released;
    if (!around.isActive()) released = _collector.flush(_state, false, error);
    _state = around;
    attachment.takeBack(error);
    updateWork();
    if (!around.isActive()) endTransaction(error);
    error.log();
}

void UndoGuardStack::endOutermost(bool quiet, LgFirstError& error) {
    GuardState outside = _state;
    outside.leave();
    close(quiet, outside, error);
}

void UndoGuardStack::close(bool quiet, GuardState const& outside, LgFirstError& error) {
    _hooks.end(_state.isLongTransition(), error);
    // Released last: its destructor may run arbitrary code, which must find the guard closed.
    RCShdPtr<CmCommandStack> released;
    if (!outside.isActive()) released = _collector.flush(_state, !quiet, error);
    // Also closes guards that hooks and listeners left open.
    _state = outside;
    updateWork();
    if (!outside.isActive() && _hooks.followTransactions()) [[unlikely]]
        endTransaction(error);
}

CmReplay UndoGuardStack::rollBack(Mark const& mark) {
    guardSource.require(mark.nestingLevel == _state.getNestingLevel(), "isInnermostGuard()");
    return _collector.rollBack(mark.numCollected);
}

// The hooks see one more outermost guard, in which everything is unexecuted.
CmReplay UndoGuardStack::abandonLongTransition() {
    guardSource.require(_state.isLongTransition() && !_state.isGuardOpen(), "isBetweenGuardsOfLongTransition()");
    _collector.requireNoScope();
    enter(GuardKind::NoLog);
    CmReplay result;
    LgFirstError error("The abandoning of a long transaction");
    error.capture([&] { result = _collector.rollBack(0); });
    close(true, GuardState(), error);
    error.rethrow();
    return result;
}

void UndoGuardStack::callOutside(std::function<void()> action) {
    if (!action) RCExUtil::throwExNullPtr(typeid(action).name());
    if (!_state.isActive() && !_isCallingOutside) return action();
    _hooks.addOutside(std::move(action));
    updateWork();
}

void UndoGuardStack::requireOpenGuard() const {
    if (!_state.isGuardOpen()) guardSource.abort("An undo command was added while no undo guard is open.");
}

// Room is made first, so that a command that was executed can always be collected; and the command is shared, as it may
// release its caller's pointer.
void UndoGuardStack::execAndAdd(RCShdPtr<CmCommand> const& cmd) {
    if (isLogging()) _collector.makeRoom();
    RCShdPtr<CmCommand> kept = cmd;
    CmCommandStack::executeStatic(kept);
    collect(std::move(kept));
}

void UndoGuardStack::add(RCShdPtr<CmCommand> const& cmd) {
    requireOpenGuard();
    try {
        if (isLogging()) _collector.makeRoom();
    } catch (...) {
        _collector.giveUp();
        throw;
    }
    collect(cmd);
}

void UndoGuardStack::exec(RCShdPtr<CmCommand> const& cmd) {
    RCShdPtr<CmCommand> const kept = cmd;
    CmCommandStack::executeStatic(kept);
    noteUnlogged();
}

void UndoGuardStack::collect(RCShdPtr<CmCommand> cmd) {
    requireOpenGuard();
    if (!isLogging()) return noteUnlogged();
    _collector.collect(std::move(cmd), !_state.permitsRedo());
}

void UndoGuardStack::noteUnlogged() {
    if (_collector.getStack() && !_state.isCommandRunning()) _collector.noteUnlogged();
}

void UndoGuardStack::beginScope(RCShdPtr<CmCommand> const& beginMark) {
    _collector.openScope();
    try {
        execAndAdd(beginMark);
    } catch (...) {
        _collector.closeScope();
        throw;
    }
}

// Collected first: whatever the target throws, no begin mark is left without its end mark.
void UndoGuardStack::endScope(RCShdPtr<CmCommand> const& endMark) {
    if (_collector.closeScope()) collect(endMark);
    RCShdPtr<CmCommand> const kept = endMark;
    CmCommandStack::executeStatic(kept);
}

void UndoGuardStack::addExtension(RCShdPtr<CmUndoGuardExtension> extension) {
    _hooks.addExtension(std::move(extension));
    updateWork();
}

void UndoGuardStack::addEndCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& callback) {
    _hooks.addEndCallback(callback);
    updateWork();
}

void UndoGuardStack::addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback) {
    _hooks.addOwnedEndCallback(callback);
    updateWork();
}

} // namespace Ko
