#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmNullCommand.h"
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
    int const height = getStackHeight();
    try {
        _stack.push_back(std::move(cmd));
    } catch (...) {
        CmLog::write(CmLog::unexpectedFailure, "The history is dropped, as it lacks ", *cmd);
        giveUpHistory();
        throw;
    }
    int const redoable = std::exchange(_current, height) + 1;
    if (_innermostSpan) [[unlikely]]
        _innermostSpan->touch();
    // What can be redone, or the oldest command where the stack is full; never both.
    if (redoable < height)
        drop(redoable, height, true);
    else if (height >= _maxStackHeight)
        drop(1, 2, true);
    else
        notifyProcessed();
}

void CmCommandStack::undo() {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canUndo(), "canUndo()");
    Span span(*this, 1, _current + 1, _current);
    replay(span, Undoing, "Undoing ", [&](CmCommand& command) {
        command.unexecute();
        if (span.requireUntouched()) --_current;
    });
}

void CmCommandStack::redo() {
    requireNoOpenStep();
    OpenGuards::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canRedo(), "canRedo()");
    ++_current;
    Span span(*this, _current, getStackHeight(), _current);
    replay(span, Redoing, "Redoing ", [&](CmCommand& command) {
        command.execute();
        span.requireUntouched();
    });
}

// Runs the command at the cursor. If that fails, the elements of the span are dropped.
template <class Run>
void CmCommandStack::replay(Span& span, State state, char const* verb, Run run) {
    CmCommand& command = *_stack[static_cast<std::size_t>(_current)];
    std::exception_ptr unexpected;
    CmLog::write(CmLog::commandFlow, verb, command);
    try {
        Span::StateScope const scope(span, state);
        run(command);
    } catch (CmEx::ExCommandFailure const&) {
        CmLog::write(CmLog::commandFailure, verb, command, " failed.\n");
        span.drop();
    } catch (...) {
        unexpected = std::current_exception();
        CmLog::write(CmLog::unexpectedFailure, verb, command, " failed unexpectedly\n");
        span.drop();
    }
    span.release();
    if (unexpected) [[unlikely]]
        rethrowAfterNotification(span, unexpected);
    if (span.isAlive()) notifyProcessed();
}

void CmCommandStack::rethrowAfterNotification(Span const& span, std::exception_ptr const& unexpected) {
    LgFirstError error("A listener of the command stack");
    if (span.isAlive()) error.capture([this] { notifyProcessed(); });
    error.log();
    std::rethrow_exception(unexpected);
}

void CmCommandStack::moveTo(ConstIterator target) {
    requireNoOpenStep();
    auto const goal = target - getBegin();
    source.require(goal < getStackHeight(), "target != _stack.end()");
    RCShdPtr<CmCommandStack> const self(getReferenceCount() > 0 ? this : nullptr);
    RCShdPtr<CmCommand> const destination = *target;
    auto const isThere = [&] { return goal < getStackHeight() && getBegin()[goal] == destination; };
    while (getNbUndoableCommands() > goal && isThere())
        undo();
    while (getNbUndoableCommands() < goal && isThere())
        redo();
}

void CmCommandStack::setMaxStackHeight(int height) {
    requireNoOpenStep();
    source.require(height >= 2, "height >= 2");
    int const excess = getStackHeight() - height;
    _maxStackHeight = height;
    if (excess >= 1) drop(1, excess > getNbUndoableCommands() ? getStackHeight() : 1 + excess, false);
}

void CmCommandStack::removeLast() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    if (_stack.size() > 1) drop(getStackHeight() - 1, getStackHeight(), false);
}

void CmCommandStack::clear() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    drop(1, getStackHeight(), false);
}

void CmCommandStack::refuseWhileStepIsOpen() const {
    throw ExInternalError(source.file(), __LINE__,
        "The history cannot be changed while the step \"" + CmLog::describe(*_openStep) +
            "\" is open: its commands are executed but not logged yet.");
}

void CmCommandStack::commandProcessedNoLog() {
    source.require(!_stack.empty(), "!_stack.empty()");
    notifyProcessed();
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

// A command was executed that the history lacks.
void CmCommandStack::giveUpHistory() noexcept {
    LgFirstError error("A listener of the command stack");
    error.capture([this] { drop(1, getStackHeight(), false); });
    error.log();
}

// Removes elements and notifies the listeners, unless a destructor of a command has released the stack.
void CmCommandStack::drop(int first, int end, bool isProcessed) {
    Span span(*this, first, end);
    span.drop();
    if (!span.isAlive()) return;
    isProcessed ? notifyProcessed() : notifyChanged();
}

// The stack is not used after the listeners were called: one of them may have released its last owner.
void CmCommandStack::notifyProcessed() {
    LgFirstError error("A listener of the command stack");
    if (_commandProcessedCallbacks.isEmpty() || _commandProcessedCallbacks.call({}, error))
        _changeCallbacks.call({}, error);
    error.rethrow();
}

void CmCommandStack::notifyChanged() {
    _changeCallbacks.call({});
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
