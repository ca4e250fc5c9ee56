#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmNullCommand.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/src/cmLog.h"
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

CmCommandStack::CmCommandStack() {
    _stack.push_back(CmNullCommand::create());
}
CmCommandStack::~CmCommandStack() = default;

void CmCommandStack::executeAndLog(RCShdPtr<CmCommand> const& cmd) {
    source.require(!cmd->getDisableExecutionOnRedo(), "!cmd->getDisableExecutionOnRedo()");
    CmUndoGuardNoLog const guard(false);
    cmd->execute();
    log(cmd);
}

void CmCommandStack::log(RCShdPtr<CmCommand> const& cmd) {
    source.require(!_stack.empty(), "!_stack.empty()");
    CmLog::write(CmLog::commandFlow, "Executed ", *cmd);
    // Appended first, as the one step that can fail.
    _stack.push_back(cmd);
    drop(_current + 1, _stack.size() - 1);
    if (_stack.size() > static_cast<std::size_t>(_maxStackHeight)) drop(1, 2);
    _current = _stack.size() - 1;
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
    CmUndoGuardNoLog const guard(false);
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(canUndo(), "canUndo()");
    std::size_t const position = _current;
    CmCommand& command = *_stack[position];
    auto const step = [&] {
        command.unexecute();
        source.require(isUntouched(position), "isUntouched(position)");
        --_current;
    };
    replay(Undoing, "Undoing ", command, step, [this] {
        drop(1, _current + 1);
        _current = 0;
    });
}

void CmCommandStack::redo() {
    CmUndoGuardNoLog const guard(false);
    source.require(!_stack.empty(), "!_stack.empty()");
    source.require(canRedo(), "canRedo()");
    RCShdPtr<CmCommand> const command = _stack[++_current];
    replay(
        Redoing, "Redoing ", *command, [&] { command->execute(); },
        [this] {
            drop(_current, _stack.size());
            _current = _stack.size() - 1;
        });
}

void CmCommandStack::moveTo(ConstIterator target) {
    auto const goal = static_cast<std::size_t>(target - _stack.cbegin());
    source.require(goal < _stack.size(), "target != _stack.end()");
    RCShdPtr<CmCommandStack> const self(getReferenceCount() > 0 ? this : nullptr);
    RCShdPtr<CmCommand> const destination = *target;
    auto const isThere = [&] { return goal < _stack.size() && _stack[goal] == destination; };
    while (_current > goal && isThere())
        undo();
    while (_current < goal && isThere())
        redo();
}

void CmCommandStack::setMaxStackHeight(int height) {
    source.require(height >= 2, "height >= 2");
    int const excess = getStackHeight() - height;
    _maxStackHeight = height;
    if (excess < 1) return;
    if (excess > getNbUndoableCommands()) {
        clear();
        return;
    }
    drop(1, 1 + static_cast<std::size_t>(excess));
    _current -= static_cast<std::size_t>(excess);
    notifyChanged();
}

void CmCommandStack::removeLast() {
    source.require(!_stack.empty(), "!_stack.empty()");
    if (_stack.size() == 1) return;
    _current = std::min(_current, _stack.size() - 2);
    drop(_stack.size() - 1, _stack.size());
    notifyChanged();
}

void CmCommandStack::clear() {
    source.require(!_stack.empty(), "!_stack.empty()");
    drop(1, _stack.size());
    _current = 0;
    notifyChanged();
}

void CmCommandStack::commandProcessedNoLog() {
    source.require(!_stack.empty(), "!_stack.empty()");
    notifyProcessed();
}

void CmCommandStack::executeStatic(RCShdPtr<CmCommand> const& cmd) {
    CmUndoGuardNoLog const guard(false);
    cmd->execute();
}

void CmCommandStack::unexecuteStatic(RCShdPtr<CmCommand> const& cmd) {
    CmUndoGuardNoLog const guard(false);
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

void CmCommandStack::drop(std::size_t first, std::size_t end) {
    using Offset = Commands::difference_type;
    auto const from = _stack.begin() + static_cast<Offset>(first);
    auto const to = _stack.begin() + static_cast<Offset>(end);
    if (_state != Idle) _dropped.insert(_dropped.end(), from, to);
    _stack.erase(from, to);
}

// Nothing of this is touched after the listeners were told: one of them may have released the last reference to it.
void CmCommandStack::notifyProcessed() {
    LgFirstError error("A listener of the command stack");
    if (_commandProcessedCallbacks.call({}, error)) _changeCallbacks.call({}, error);
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
