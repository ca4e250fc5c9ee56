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
    int numDropped = 0;

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
    undoStep(true, nullptr);
}

void CmCommandStack::redo() {
    redoStep(true, nullptr);
}

CmReplay CmCommandStack::tryUndo() {
    requireNoOpenStep();
    Replay answer;
    if (canUndo()) undoStep(true, &answer);
    return answer.tell();
}

CmReplay CmCommandStack::tryRedo() {
    requireNoOpenStep();
    Replay answer;
    if (canRedo()) redoStep(true, &answer);
    return answer.tell();
}

// Without an answer, an unexpected error is thrown.
// @returns whether the command has not failed.
bool CmCommandStack::undoStep(bool isLast, Replay* answer) {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canUndo(), "canUndo()");
    prepare();
    Span span(*this, 1, _current + 1, _current);
    return replay(span, Undoing, "Undoing ", isLast, answer, [&](CmCommand& command) {
        command.unexecute();
        if (span.requireUntouched()) stepBack();
    });
}

bool CmCommandStack::redoStep(bool isLast, Replay* answer) {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canRedo(), "canRedo()");
    prepare();
    ++_current;
    Span span(*this, _current, getStackHeight(), _current);
    return replay(span, Redoing, "Redoing ", isLast, answer, [&](CmCommand& command) {
        command.execute();
        if (span.requireUntouched()) confirmStepForward();
    });
}

// Runs the command at the cursor. If that fails, the elements of the span are dropped.
template <class Run>
bool CmCommandStack::replay(Span& span, State state, char const* verb, bool isLast, Replay* answer, Run run) {
    CmCommand& command = *find(_current);
    CmLog::write(CmLog::commandFlow, verb, command);
    try {
        Span::StateScope const scope(span, state);
        run(command);
    } catch (CmEx::ExCommandFailure const&) {
        CmLog::write(CmLog::commandFailure, verb, command, " failed.\n");
        cutFailed(span, command, answer);
        if (span.isAlive()) notify(true);
        return false;
    } catch (...) {
        CmLog::write(CmLog::unexpectedFailure, verb, command, " failed unexpectedly\n");
        cutFailed(span, command, answer);
        if (span.isAlive()) notifyQuietly();
        if (!answer) throw;
        return false;
    }
    if (answer) answer->outcome = CmReplay::Outcome::Done;
    if (!span.isAlive()) return true;
    if (_keeper) [[unlikely]]
        _keeper->record(Keeper::Kind::Moved, {}, _current, !isLast);
    notify(true, isLast);
    return true;
}

// Called while the error is handled.
void CmCommandStack::cutFailed(Span& span, CmCommand& failed, Replay* answer) noexcept {
    std::exception_ptr const error = std::current_exception();
    int const numDropped = cut(span, failed, error);
    if (answer) *answer = {CmReplay::Outcome::Failed, error, numDropped};
}

// An error of a command is the one that the caller sees.
void CmCommandStack::notifyQuietly() noexcept {
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
    Replay answer;
    replayTo(target, &answer);
    return answer.tell();
}

void CmCommandStack::moveTo(ConstIterator target) {
    replayTo(target, nullptr);
}

void CmCommandStack::replayTo(ConstIterator target, Replay* answer) {
    requireNoOpenStep();
    auto const goal = static_cast<int>(target - getBegin());
    source.require(goal < getStackHeight(), "target != _stack.end()");
    RCShdPtr<CmCommandStack> const self(getReferenceCount() > 0 ? this : nullptr);
    RCShdPtr<CmCommand> const destination = *target;
    auto const isThere = [&] { return goal < getStackHeight() && getBegin()[goal] == destination; };
    try {
        bool isDone = true;
        while (isDone && _current > goal && isThere())
            isDone = undoStep(_current - 1 == goal, answer);
        while (isDone && _current < goal && isThere())
            isDone = redoStep(_current + 1 == goal, answer);
    } catch (...) { // from a listener, after some steps that are not delivered yet
        LgFirstError error("A listener of the command stack");
        error.capture([this] { deliverChanges(); });
        error.log();
        throw;
    }
}

// Commands of an open step could not be taken back, so that no position of the history leads to a known state.
void CmCommandStack::cutByFailure(CmCommand& failed, std::exception_ptr const& error) noexcept {
    Span span(*this, 1, getStackHeight());
    cut(span, failed, error);
    if (span.isAlive()) notifyQuietly();
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
