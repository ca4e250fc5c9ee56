#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmNullCommand.h"
#include "framework/command/src/cmLog.h"
#include "framework/command/src/cmUndoGuardStack.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/xmlWriter.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

class StateScope {
public:
    StateScope(PiCommandStack::State& state, PiCommandStack::State during) noexcept : _state(state), _before(state) {
        _state = during;
    }
    ~StateScope() { _state = _before; }
    StateScope(StateScope const&) = delete;
    StateScope& operator=(StateScope const&) = delete;

private:
    PiCommandStack::State& _state;
    PiCommandStack::State _before;
};

} // namespace

CmCommandStack::CmCommandStack() : _stack{CmNullCommand::create()}, _current(_stack.begin()) {}
CmCommandStack::~CmCommandStack() = default;

void CmCommandStack::executeAndLog(RCShdPtr<CmCommand> const& cmd) {
    source.require(!cmd->getDisableExecutionOnRedo(), "!cmd->getDisableExecutionOnRedo()");
    UndoGuardStack::NoLogScope const guard;
    cmd->execute();
    log(cmd);
}

void CmCommandStack::log(RCShdPtr<CmCommand> const& cmd) {
    source.require(!_stack.empty(), "!_stack.empty()");
    CmLog::write(CmLog::commandFlow, "Executed ", *cmd);
    makeRoomForDropped();
    auto const redoable = CmCommandStack::canRedo() ? std::distance(_current, _stack.end()) - 1 : 0;
    try {
        _stack.push_back(cmd);
    } catch (...) {
        giveUpHistory();
        throw;
    }
    if (redoable > 0) drop(_stack.end() - 1 - redoable, _stack.end() - 1);
    if (getStackHeight() > _maxStackHeight) dropOldest();
    _current = std::prev(_stack.end());
    notifyProcessed();
}

// `step` moves the cursor; `dropHistory` cuts what a failure made unreliable.
template <class Step, class DropHistory>
void CmCommandStack::replay(
    State state, char const* verb, CmCommand const& command, Step step, DropHistory dropHistory) {
    CmLog::write(CmLog::commandFlow, verb, command);
    try {
        StateScope const scope(_state, state);
        step();
    } catch (CmEx::ExCommandFailure const&) {
        CmLog::write(CmLog::commandFailure, verb, command, " failed.\n");
        dropHistory();
    } catch (...) {
        CmLog::write(CmLog::unexpectedFailure, verb, command, " failed unexpectedly\n");
        dropHistory();
        _dropped.clear();
        LgFirstError error("A listener of the command stack");
        error.capture([this] { notifyProcessed(); });
        error.log();
        throw;
    }
    _dropped.clear();
    notifyProcessed();
}

void CmCommandStack::undo() {
    UndoGuardStack::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canUndo(), "canUndo()");
    auto const position = _current;
    CmCommand& command = **position;
    auto const step = [&] {
        command.unexecute();
        source.require(isUntouched(position), "isUntouched(position)");
        --_current;
    };
    replay(Undoing, "Undoing ", command, step, [this] {
        drop(_stack.begin() + 1, _current + 1);
        _current = _stack.begin();
    });
}

void CmCommandStack::redo() {
    UndoGuardStack::NoLogScope const guard;
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(CmCommandStack::canRedo(), "canRedo()");
    auto const position = ++_current;
    CmCommand& command = **position;
    auto const step = [&] {
        command.execute();
        source.require(isUntouched(position), "isUntouched(position)");
    };
    replay(Redoing, "Redoing ", command, step, [this] {
        drop(_current, _stack.end());
        _current = std::prev(_stack.end());
    });
}

void CmCommandStack::moveTo(ConstIterator target) {
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
    source.require(height >= 2, "height >= 2");
    int const excess = getStackHeight() - height;
    int const undoable = getNbUndoableCommands();
    _maxStackHeight = height;
    if (excess < 1) return;
    if (excess > undoable) {
        clear();
        return;
    }
    makeRoomForDropped();
    drop(_stack.begin() + 1, _stack.begin() + 1 + excess);
    _current = _stack.begin() + (undoable - excess);
    notifyChanged();
}

void CmCommandStack::removeLast() {
    source.require(!_stack.empty(), "!_stack.empty()");
    if (_stack.size() == 1) return;
    makeRoomForDropped();
    int const position = std::min(getNbUndoableCommands(), getStackHeight() - 2);
    drop(std::prev(_stack.end()), _stack.end());
    _current = _stack.begin() + position;
    notifyChanged();
}

void CmCommandStack::clear() {
    source.require(!_stack.empty(), "!_stack.empty()");
    makeRoomForDropped();
    drop(_stack.begin() + 1, _stack.end());
    _current = _stack.begin();
    notifyChanged();
}

void CmCommandStack::commandProcessedNoLog() {
    source.require(!_stack.empty(), "!_stack.empty()");
    notifyProcessed();
}

void CmCommandStack::executeStatic(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::NoLogScope const guard;
    cmd->execute();
}

void CmCommandStack::unexecuteStatic(RCShdPtr<CmCommand> const& cmd) {
    UndoGuardStack::NoLogScope const guard;
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
    drop(_stack.begin() + 1, _stack.end());
    _current = _stack.begin();
    LgFirstError error("A listener of the command stack");
    error.capture([this] { notifyChanged(); });
    error.log();
}

// A command that is running is kept until it has returned; dropping must not fail half way.
void CmCommandStack::makeRoomForDropped() {
    if (_state != Idle) _dropped.reserve(_dropped.size() + _stack.size());
}

// Invalidates the cursor.
void CmCommandStack::drop(Commands::iterator first, Commands::iterator end) noexcept {
    if (_state != Idle) _dropped.insert(_dropped.end(), first, end);
    _stack.erase(first, end);
}

// Like `drop`, of the one command after the bottom.
void CmCommandStack::dropOldest() noexcept {
    _stack[0].swap(_stack[1]);
    if (_state != Idle) _dropped.push_back(std::move(_stack[0]));
    _stack.pop_front();
}

// Nothing of this is touched after the listeners were told: one of them may have released the last reference to it.
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
    for (auto command = stack.getBegin(); command != stack.getEnd(); ++command) {
        (*command)->dump(writer);
        if (command == stack.getCurrent()) writer.writeTag("Current", "");
    }
    writer.closeTag();
}

} // namespace Ko
