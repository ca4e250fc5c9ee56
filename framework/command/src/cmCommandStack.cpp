#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmNullCommand.h"
#include "framework/command/src/cmHistoryKeeper.h"
#include "framework/command/src/cmHistorySpan.h"
#include "framework/command/src/cmLog.h"
#include "framework/command/src/cmOpenGuards.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/xmlWriter.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

} // namespace

CmCommandStack::CmCommandStack() : _stack{CmNullCommand::create()} {}

// The commands are destroyed one by one while the stack is whole: their destructors may use it.
CmCommandStack::~CmCommandStack() {
    Span::leaveStack(*this);
    while (_stack.size() > 1) {
        RCShdPtr<CmCommand> const last = std::move(_stack.back());
        _stack.pop_back();
        _current = std::min(_current, getStackHeight() - 1);
    }
}

// The command is shared, as it may release its caller's pointer. It may also release the last owner of the stack.
void CmCommandStack::executeAndLog(RCShdPtr<CmCommand> const& cmd) {
    source.require(!cmd->getDisableExecutionOnRedo(), "!cmd->getDisableExecutionOnRedo()");
    OpenGuards::NoLogScope const guard;
    RCShdPtr<CmCommand> shared = cmd;
    {
        Span const span(*this, 0, 0);
        shared->execute();
        if (!span.isAlive()) return;
    }
    append(std::move(shared));
}

void CmCommandStack::log(RCShdPtr<CmCommand> const& cmd) {
    append(cmd);
}

void CmCommandStack::append(RCShdPtr<CmCommand> cmd) {
    source.require(!_stack.empty(), "!_stack.empty()");
    CmLog::write(CmLog::commandFlow, "Executed ", *cmd);
    if (_keeper && joinLast(cmd)) return;
    int const height = getStackHeight();
    try {
        prepare();
        if (_keeper) _keeper->addSize(*cmd);
        _stack.push_back(std::move(cmd));
    } catch (...) {
        if (_keeper) _keeper->truncateSizes(height);
        CmLog::write(CmLog::unexpectedFailure, "The history is dropped, as it lacks ", *cmd);
        giveUpHistory();
        throw;
    }
    int const redoable = std::exchange(_current, height) + 1;
    if (_innermostSpan) [[unlikely]]
        _innermostSpan->touch();
    int const surplus = countSurplus(redoable);
    if (_clean >= redoable) _clean = noPosition;
    _altered = std::min(_altered, redoable - 1);
    if (_keeper) [[unlikely]]
        _keeper->recordLogged(redoable, height, surplus);
    dropForLogged(redoable, height, surplus);
}

// What could be redone, and the oldest commands where there are too many.
void CmCommandStack::dropForLogged(int redoable, int height, int surplus) {
    if (redoable == height && surplus == 0) return notify(true);
    if (surplus == 0) return drop(redoable, height, true);
    forgetOldest(surplus);
    if (redoable == height) return drop(1, 1 + surplus, true);
    Span redo(*this, redoable, height);
    Span oldest(*this, 1, 1 + surplus);
    Span::drop(redo, oldest);
    if (redo.isAlive()) notify(true);
}

// How many of the oldest commands are too many when the last element is logged and moves to position `newest`.
int CmCommandStack::countSurplus(int newest) const noexcept {
    int const tooHigh = newest >= _maxStackHeight ? 1 : 0;
    if (!_keeper) [[likely]]
        return tooHigh;
    return std::max(tooHigh, _keeper->countSurplus(newest, getStackHeight() - 1, newest - 1));
}

// Merging is user code: it may throw, release its owner, or change the history, and destroy the stack.
bool CmCommandStack::joinLast(RCShdPtr<CmCommand> const& next) {
    if (!_keeper->canMerge()) return false;
    RCShdPtr<CmMerger> const merger = _keeper->merger;
    int const position = _current;
    RCShdPtr<CmCommand> const last = *getCurrent();
    RCShdPtr<CmCommand> merged;
    {
        Span const span(*this, position, position + 1);
        LgFirstError error("The merging of commands");
        error.capture([&] {
            prepare();
            merged = merger->merge(last, next);
        });
        error.log();
        if (!span.isAlive()) return true;
        if (!merged || span.isTouched() || _current != position) return false;
    }
    _stack[static_cast<std::size_t>(_current)] = merged;
    _keeper->setSize(_current, *merged);
    int const surplus = countSurplus(_current);
    _keeper->recordMerged(merged, surplus);
    dropForLogged(getStackHeight(), getStackHeight(), surplus);
    return true;
}

void CmCommandStack::prepare() const {
    if (_keeper) [[unlikely]]
        _keeper->makeRoom();
}

/// What an undo or a redo of one or several steps did.
class CmCommandStack::Replay {
public:
    CmReplay::Outcome outcome = CmReplay::Outcome::NothingToDo;
    std::exception_ptr error;
    bool isExpected = true;
    int numDropped = 0;

    void rethrowUnexpected() const {
        if (!isExpected) [[unlikely]]
            std::rethrow_exception(error);
    }
    CmReplay tell() const { return {outcome, toExBase(error), numDropped}; }
};

// An error that is no `ExBase` becomes one with its text.
OPtr<ExBase const> CmCommandStack::toExBase(std::exception_ptr const& error) {
    if (!error) return nullptr;
    try {
        std::rethrow_exception(error);
    } catch (ExBase const& known) {
        return OPtr<ExBase const>(known.clone());
    } catch (std::exception const& standard) {
        return std::make_unique<ExInternalError>(source.file(), __LINE__, standard.what());
    } catch (...) {
        return std::make_unique<ExInternalError>(source.file(), __LINE__, "An exception of an unknown type.");
    }
}

void CmCommandStack::undo() {
    static_cast<void>(undoStep(true, false));
}

void CmCommandStack::redo() {
    static_cast<void>(redoStep(true, false));
}

CmReplay CmCommandStack::tryUndo() {
    requireNoOpenStep();
    return canUndo() ? undoStep(true, true).tell() : CmReplay();
}

CmReplay CmCommandStack::tryRedo() {
    requireNoOpenStep();
    return canRedo() ? redoStep(true, true).tell() : CmReplay();
}

CmCommandStack::Replay CmCommandStack::undoStep(bool isLast, bool isAnswered) {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canUndo(), "canUndo()");
    prepare();
    Span span(*this, 1, _current + 1, _current);
    return replay(span, Undoing, "Undoing ", isLast, isAnswered, [&](CmCommand& command) {
        command.unexecute();
        if (span.requireUntouched()) stepBack();
    });
}

CmCommandStack::Replay CmCommandStack::redoStep(bool isLast, bool isAnswered) {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canRedo(), "canRedo()");
    prepare();
    ++_current;
    Span span(*this, _current, getStackHeight(), _current);
    return replay(span, Redoing, "Redoing ", isLast, isAnswered, [&](CmCommand& command) {
        command.execute();
        if (span.requireUntouched()) confirmStepForward();
    });
}

// Runs the command at the cursor. If that fails, the elements of the span are dropped.
template <class Run>
CmCommandStack::Replay CmCommandStack::replay(
    Span& span, State state, char const* verb, bool isLast, bool isAnswered, Run run) {
    CmCommand& command = *_stack[static_cast<std::size_t>(_current)];
    Replay result;
    CmLog::write(CmLog::commandFlow, verb, command);
    try {
        Span::StateScope const scope(span, state);
        run(command);
        result.outcome = CmReplay::Outcome::Done;
    } catch (CmEx::ExCommandFailure const&) {
        result.error = std::current_exception();
        CmLog::write(CmLog::commandFailure, verb, command, " failed.\n");
    } catch (...) {
        result.error = std::current_exception();
        result.isExpected = false;
        CmLog::write(CmLog::unexpectedFailure, verb, command, " failed unexpectedly\n");
    }
    if (result.error) [[unlikely]]
        result.numDropped = cut(span, command, result.error);
    else if (span.isAlive() && _keeper)
        _keeper->record(Keeper::Kind::Moved, {}, _current, !isLast);
    if (result.error) result.outcome = CmReplay::Outcome::Failed;
    if (span.isAlive()) notifyAfterReplay(result, isLast);
    // Inside the scope that suspends logging, so that the first error is the one that is seen.
    if (!isAnswered) result.rethrowUnexpected();
    return result;
}

// An unexpected error of the command is the one that the caller sees.
void CmCommandStack::notifyAfterReplay(Replay const& result, bool isLast) {
    if (result.isExpected) return notify(true, isLast || result.error);
    LgFirstError error("A listener of the command stack");
    error.capture([this] { notify(true); });
    error.log();
}

// @returns how many elements were dropped.
int CmCommandStack::cut(Span& span, CmCommand& failed, std::exception_ptr const& error) noexcept {
    int const numDropped = span.isAlive() ? span.getLength() : 0;
    if (span.isAlive()) {
        loseCleanMark(span.moved(_current));
        if (_keeper) _keeper->recordCut(span, failed, error);
    }
    span.dropFailed();
    return numDropped;
}

CmReplay CmCommandStack::tryMoveTo(ConstIterator target) {
    return replayTo(target, true).tell();
}

void CmCommandStack::moveTo(ConstIterator target) {
    static_cast<void>(replayTo(target, false));
}

CmCommandStack::Replay CmCommandStack::replayTo(ConstIterator target, bool isAnswered) {
    requireNoOpenStep();
    auto const goal = static_cast<int>(target - getBegin());
    source.require(goal < getStackHeight(), "target != _stack.end()");
    RCShdPtr<CmCommandStack> const self(getReferenceCount() > 0 ? this : nullptr);
    RCShdPtr<CmCommand> const destination = *target;
    auto const isThere = [&] { return goal < getStackHeight() && getBegin()[goal] == destination; };
    Replay result;
    try {
        while (_current > goal && isThere() && !result.error)
            result = undoStep(_current - 1 == goal, isAnswered);
        while (_current < goal && isThere() && !result.error)
            result = redoStep(_current + 1 == goal, isAnswered);
    } catch (...) { // from a listener, after some steps that are not delivered yet
        LgFirstError error("A listener of the command stack");
        error.capture([this] { deliverChanges(); });
        error.log();
        throw;
    }
    return result;
}

void CmCommandStack::setMaxStackHeight(int height) {
    requireNoOpenStep();
    source.require(height >= 2, "height >= 2");
    int const excess = getStackHeight() - height;
    if (excess >= 1) prepare();
    _maxStackHeight = height;
    if (excess < 1) return;
    if (excess > _current) return dropAll();
    dropOldest(excess);
}

void CmCommandStack::dropOldest(int count) {
    forgetOldest(count);
    if (_keeper) _keeper->record(Keeper::Kind::Trimmed, {{1, count, 0}}, _current - count);
    drop(1, 1 + count, false);
}

// The document stays as it is: it is the new initial state.
void CmCommandStack::dropAll() {
    _clean = _clean == _current ? 0 : noPosition;
    if (_keeper) _keeper->record(Keeper::Kind::Cleared, {{1, getStackHeight() - 1, 0}}, 0);
    drop(1, getStackHeight(), false);
}

void CmCommandStack::removeLast() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    if (_stack.size() == 1) return;
    prepare();
    int const last = getStackHeight() - 1;
    // The document keeps the change of a step that is taken out while it is the current one: no position leads to a known state.
    if (_current == last)
        loseCleanMark(last - 1);
    else if (_clean == last)
        _clean = noPosition;
    if (_keeper) _keeper->record(Keeper::Kind::Trimmed, {{last, 1, 0}}, std::min(_current, last - 1));
    drop(last, last + 1, false);
}

void CmCommandStack::clear() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    prepare();
    dropAll();
}

LiString CmCommandStack::getUndoText() const {
    return canUndo() ? _stack[static_cast<std::size_t>(_current)]->getDescription() : LiString();
}

LiString CmCommandStack::getRedoText() const {
    return canRedo() ? _stack[static_cast<std::size_t>(_current) + 1]->getDescription() : LiString();
}

void CmCommandStack::setClean() {
    requireNoOpenStep();
    _clean = _current;
    updateCleanMark();
}

void CmCommandStack::setMerger(RCShdPtr<CmMerger> merger) {
    getKeeper().merger.swap(merger);
}

void CmCommandStack::setMaxMemory(std::size_t bytes) {
    requireNoOpenStep();
    getKeeper().setMaxMemory(bytes);
    prepare();
    int const surplus = _keeper->countSurplus(0, 0, canRedo() ? _current : _current - 1);
    if (surplus > 0) dropOldest(surplus);
}

std::size_t CmCommandStack::getMaxMemory() const noexcept {
    return _keeper ? _keeper->getMaxMemory() : 0;
}
std::size_t CmCommandStack::getMemory() const noexcept {
    return _keeper ? _keeper->getMemory() : 0;
}

CmCommandStack::Keeper& CmCommandStack::getKeeper() {
    if (!_keeper) _keeper = std::make_unique<Keeper>(*this);
    return *_keeper;
}

void CmCommandStack::refuseWhileStepIsOpen() const {
    throw ExInternalError(source.file(), __LINE__,
        "The history cannot be changed while the step \"" + CmLog::describe(*_openStep) +
            "\" is open: its commands are executed but not logged yet.");
}

void CmCommandStack::commandProcessedNoLog() {
    source.require(!_stack.empty(), "!_stack.empty()");
    prepare();
    loseCleanMark(_current);
    if (_keeper) _keeper->record(Keeper::Kind::Unlogged, {}, _current);
    notify(true);
}

void CmCommandStack::executeStatic(RCShdPtr<CmCommand> const& cmd) {
    OpenGuards::NoLogScope const guard;
    cmd->execute();
}

void CmCommandStack::unexecuteStatic(RCShdPtr<CmCommand> const& cmd) {
    OpenGuards::NoLogScope const guard;
    cmd->unexecute();
}

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
    return getKeeper().changes.subscribe(std::move(callable));
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

// A command was executed that the history lacks.
void CmCommandStack::giveUpHistory() noexcept {
    LgFirstError error("A listener of the command stack");
    error.capture([this] {
        loseCleanMark(_current);
        dropAll();
    });
    error.log();
}

// Commands of an open step could not be taken back, so that no position of the history leads to a known state.
void CmCommandStack::cutByFailure(CmCommand& failed, std::exception_ptr const& error) noexcept {
    Span span(*this, 1, getStackHeight());
    cut(span, failed, error);
    if (!span.isAlive()) return;
    LgFirstError listeners("A listener of the command stack");
    listeners.capture([this] { notify(true); });
    listeners.log();
}

// Removes elements and notifies the listeners, unless a destructor of a command has released the stack.
void CmCommandStack::drop(int first, int end, bool isProcessed) {
    Span span(*this, first, end);
    span.drop();
    if (span.isAlive()) notify(isProcessed);
}

// The stack is not used after the last listeners were called: one of them may have released its last owner. During the delivery of a
// change, the listeners are postponed until all changes are delivered.
void CmCommandStack::notify(bool isProcessed, bool isLast) {
    LgFirstError error("A listener of the command stack");
    if (!_keeper) [[likely]]
        callListeners(isProcessed, error);
    else if (_keeper->isDelivering())
        _keeper->postpone(isProcessed);
    else if (!isLast || _keeper->deliver(error))
        while (callListeners(isProcessed, error) && _keeper->takePostponed(isProcessed)) {
        }
    error.rethrow();
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
    if (_keeper->deliver(error))
        while (_keeper->takePostponed(isProcessed) && callListeners(isProcessed, error)) {
        }
    error.rethrow();
}

void dumpObject(std::ostream& stream, CmCommandStack const& stack) {
    XmlWriter writer(stream, 3);
    writer.openTag("CommandStack");
    if (!stack.getName().empty()) writer.writeTag("Name", stack.getName());
    for (int position = 0; position < stack.getStackHeight(); ++position) {
        RCShdPtr<CmCommand> const command = stack.getBegin()[position];
        command->dump(writer);
        if (position == stack.getNbUndoableCommands()) writer.writeTag("Current", "");
    }
    writer.closeTag();
}

} // namespace Ko
