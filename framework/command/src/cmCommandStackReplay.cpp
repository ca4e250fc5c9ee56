#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/src/cmHistoryKeeper.h"
#include "framework/command/src/cmHistorySpan.h"
#include "framework/command/src/cmLog.h"
#include "framework/command/src/cmOpenGuards.h"
#include "resmgt/lgFirstError.h"

#include <exception>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

} // namespace

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
        loseCleanMark(getStackHeight() - 1 - numDropped);
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

// Commands of an open step could not be taken back, so that no position of the history leads to a known state.
void CmCommandStack::cutByFailure(CmCommand& failed, std::exception_ptr const& error) noexcept {
    Span span(*this, 1, getStackHeight());
    cut(span, failed, error);
    if (!span.isAlive()) return;
    LgFirstError listeners("A listener of the command stack");
    listeners.capture([this] { notify(true); });
    listeners.log();
}

void CmCommandStack::executeStatic(RCShdPtr<CmCommand> const& cmd) {
    OpenGuards::NoLogScope const guard;
    cmd->execute();
}

void CmCommandStack::unexecuteStatic(RCShdPtr<CmCommand> const& cmd) {
    OpenGuards::NoLogScope const guard;
    cmd->unexecute();
}

} // namespace Ko
