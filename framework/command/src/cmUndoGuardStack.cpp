#include "framework/command/src/cmUndoGuardStack.h"

#include "base/assertions.h"
#include "base/exBase.h"
#include "resmgt/envIntVar.h"

#include <optional>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmUndoGuard"};

EnvIntVar disallowNesting("KO_DISALLOW_LONG_TRANSITION_NESTING", 0, source.file());

} // namespace

OPtr<UndoGuardStack> UndoGuardStack::_instance;

void UndoGuardStack::initialize() {
    source.require(_instance == nullptr, "undoGuardStack == 0");
    _instance = std::make_unique<UndoGuardStack>();
}

void UndoGuardStack::finalize() {
    source.require(_instance != nullptr, "undoGuardStack != 0");
    _instance.reset();
}

void UndoGuardStack::refuse() {
    source.require(PiAppThread::isCurrent(), "PiAppThread::isCurrent()");
    source.fail("undoGuardStack != 0");
}

/// A guard on its way in: knows what was there before, and puts it back when the guard cannot be entered.
class UndoGuardStack::Entry {
public:
    explicit Entry(UndoGuardStack& guards) noexcept
        : _guards(guards), _state(guards._state), _longLevel(guards._longTxnNestingLevel),
          _shortLevel(guards._shortTxnNestingLevel), _noLogLevel(guards._noLogLevel),
          _noRedoLevel(guards._noRedoLevel) {}
    Entry(Entry const&) = delete;
    Entry& operator=(Entry const&) = delete;

    void adoptStack(RCShdPtr<CmCommandStack> const& stack) {
        _guards._stack = stack;
        _adopted = true;
    }

    void describe(LiString const& description) {
        LiString before = _guards._macroCmd->getOwnDescription();
        _guards._macroCmd->setDescription(description);
        if (!_description) _description = std::move(before);
    }

    void beginExtensions() {
        bool const longTransition = isLong(_guards._state);
        for (std::size_t const count = _guards._extensions.size(); _begun < count;) {
            RCShdPtr<CmUndoGuardExtension> const extension = _guards._extensions[_begun];
            extension->beginOutermostGuard(longTransition);
            ++_begun;
        }
    }

    // What begin hooks executed before one of them failed stays undoable: as a step of its own, or with the long
    // transaction that goes on.
    void rollBack() noexcept {
        LgFirstError error("The way back from an undo guard that could not be entered");
        _guards.endExtensions(_begun, error);
        if (_state == OUT_OF_GUARD) _guards.flush(true, error);
        _guards._state = _state;
        _guards._longTxnNestingLevel = _longLevel;
        _guards._shortTxnNestingLevel = _shortLevel;
        _guards._noLogLevel = _noLogLevel;
        _guards._noRedoLevel = _noRedoLevel;
        if (_adopted && _guards._macroCmd->isEmpty()) _guards._stack.reset();
        if (_description) error.capture([this] { _guards._macroCmd->setDescription(*_description); });
        error.log();
    }

private:
    UndoGuardStack& _guards;
    State _state;
    int _longLevel;
    int _shortLevel;
    int _noLogLevel;
    int _noRedoLevel;
    std::size_t _begun = 0;
    bool _adopted = false;
    std::optional<LiString> _description;
};

void UndoGuardStack::enter(
    RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param, Kind kind) {
    Entry entry(*this);
    try {
        if (kind != Kind::Plain) {
            source.require(param.get() == PiExecParam::NOT_TRANSITION, "param.get() == PiExecParam::NOT_TRANSITION");
            source.require(stack.isNull(), "stack.isNull()");
        }
        ++_shortTxnNestingLevel;
        source.require(_shortTxnNestingLevel >= 1, "_shortTxnNestingLevel >= 1");
        if (_shortTxnNestingLevel == 1) _exceptionsAtEntry = std::uncaught_exceptions();
        advance(param.get(), kind == Kind::NoRedo);

        if (_stack.isNull() && !stack.isNull()) {
            entry.adoptStack(stack);
            if (isLogging()) entry.describe(description);
        }
        if (_shortTxnNestingLevel == 1) {
            if (!_stack.isNull() && (_state == TXN || _state == END_TXN) && !description.empty())
                entry.describe(description);
            entry.beginExtensions();
        }
        markLevel(kind);
        if (!stack.isNull() && isLogging() && _noRedoLevel == noLevel)
            source.require(stack == _stack, "stack == _stack");
        if (_stack.isNull()) source.require(_macroCmd->isEmpty(), "! (_stack.isNull() && !_macroCmd->isEmpty() )");
    } catch (...) {
        entry.rollBack();
        throw;
    }
}

void UndoGuardStack::advance(PiExecParam::Transition transition, bool noRedo) {
    struct Row {
        // The next states, by the guard's parameter: NOT_TRANSITION, BEGIN_TRANSITION, TRANSITION, END_TRANSITION.
        int next[4];
        // The parameters that a nested guard may have.
        char const* allowed;
        // Where an outermost guard is opened.
        char const* place;
    };
    constexpr int none = -1;
    // What a guard may do, by the state in which it is opened.
    constexpr Row rows[] = {
        {{NO_TXN, BEGIN_TXN, none, none}, nullptr, "outside a long transaction"},
        {{NO_TXN, none, none, none}, "param.get() == PiExecParam::NOT_TRANSITION", nullptr},
        {{BEGIN_TXN, BEGIN_TXN, none, none},
            "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::BEGIN_TRANSITION", nullptr},
        {{BEGIN_TXN, BEGIN_TXN, TXN, END_TXN}, nullptr, "after the begin of a long transaction"},
        {{TXN, none, TXN, none}, "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::TRANSITION",
            nullptr},
        {{TXN, none, TXN, END_TXN}, nullptr, "within a long transaction"},
        {{END_TXN, none, none, END_TXN},
            "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::END_TRANSITION", nullptr},
        {{END_TXN, none, none, END_TXN}, nullptr, "after the end of an inner long transaction"},
    };
    if (_state < OUT_OF_GUARD || _state > END_TXN_OFG)
        source.abort("The undo guards are in the unknown state " + std::to_string(_state) + ".");
    Row const& row = rows[_state];
    bool const isParameter = transition >= PiExecParam::NOT_TRANSITION && transition <= PiExecParam::END_TRANSITION;
    int const next = isParameter ? row.next[transition] : none;
    if (row.allowed) {
        requireNestedGuard();
        return source.require(next != none, row.allowed);
    }
    _state == OUT_OF_GUARD ? requireFirstGuard(noRedo) : requireGuardOfLongTransaction();
    if (next == none)
        source.abort(
            "A guard with transition parameter " + std::to_string(transition) + " cannot be opened " + row.place + ".");
    if (transition == PiExecParam::BEGIN_TRANSITION) beginLongTransaction();
    _state = static_cast<State>(next);
}

void UndoGuardStack::requireFirstGuard(bool noRedo) const {
    source.require(_longTxnNestingLevel == 0, "_longTxnNestingLevel == 0");
    source.require(_shortTxnNestingLevel == 1, "_shortTxnNestingLevel == 1");
    source.require(_noLogLevel == noLevel, "_noLogLevel == std::numeric_limits<int>::max()");
    source.require(_noRedoLevel == noLevel, "_noRedoLevel == std::numeric_limits<int>::max()");
    source.require(_stack.isNull(), "_stack.isNull()");
    source.require(_macroCmd->isEmpty(), "_macroCmd->isEmpty()");
    source.require(!noRedo, "!noRedo");
}

void UndoGuardStack::requireGuardOfLongTransaction() const {
    source.require(_longTxnNestingLevel > 0, "_longTxnNestingLevel > 0");
    source.require(_shortTxnNestingLevel == 1, "_shortTxnNestingLevel == 1");
}

void UndoGuardStack::requireNestedGuard() const {
    if (_state == NO_TXN)
        source.require(_longTxnNestingLevel == 0, "_longTxnNestingLevel == 0");
    else
        source.require(_longTxnNestingLevel > 0, "_longTxnNestingLevel > 0");
    source.require(_shortTxnNestingLevel > 1, "_shortTxnNestingLevel > 1");
}

void UndoGuardStack::beginLongTransaction() {
    if (_longTxnNestingLevel > 0 && disallowNesting.get() != 0)
        throw ExInternalError(source.file(), __LINE__, "Nested long transitions are disallowed.");
    ++_longTxnNestingLevel;
}

void UndoGuardStack::leaveWithHooks(bool quiet) {
    LgFirstError error("The closing of an undo guard");
    bool const isOpen = _instance && _instance->_shortTxnNestingLevel == 1;
    int const exceptionsAtEntry = isOpen ? _instance->_exceptionsAtEntry : 0;
    error.capture([&] { getInstance().leaveOutermost(quiet); });
    error.finish(exceptionsAtEntry);
}

void UndoGuardStack::leaveOutermost(bool quiet) {
    source.require(_state != OUT_OF_GUARD, "_state != OUT_OF_GUARD");
    source.require(_shortTxnNestingLevel > 0, "_shortTxnNestingLevel > 0");
    LgFirstError error("The closing of an undo guard");
    closeOutermost(quiet, error);
    leaveLevel();
    error.rethrow();
}

void UndoGuardStack::closeOutermost(bool quiet, LgFirstError& error) {
    State after = OUT_OF_GUARD;
    int longLevelAfter = _longTxnNestingLevel;
    switch (_state) {
    case NO_TXN:
        break;
    case BEGIN_TXN:
        after = BEGIN_TXN_OFG;
        break;
    case TXN:
        after = TXN_OFG;
        break;
    case END_TXN:
        after = --longLevelAfter == 0 ? OUT_OF_GUARD : END_TXN_OFG;
        break;
    default:
        source.abort("A guard closes in the state " + std::to_string(_state) + ", in which none is open.");
    }
    callEndCallbacks(error);
    endExtensions(_extensions.size(), error);
    if (after == OUT_OF_GUARD) flush(quiet, error);
    // Also where a hook or a listener left a guard of its own open: nothing stays inside this one.
    _state = after;
    _longTxnNestingLevel = longLevelAfter;
    _shortTxnNestingLevel = 1;
}

void UndoGuardStack::callEndCallbacks(LgFirstError& error) {
    while (!_endCallbacks.empty()) {
        RCShdPtr<CbHandler<CbEmptyType>> const callback = _endCallbacks.front().lock();
        _endCallbacks.pop_front();
        if (callback) error.capture([&] { callback->call({}); });
    }
    _ownedEndCallbacks.clear();
}

void UndoGuardStack::endExtensions(std::size_t count, LgFirstError& error) {
    bool const longTransition = isLong(_state);
    while (count-- > 0) {
        RCShdPtr<CmUndoGuardExtension> const extension = _extensions[count];
        error.capture([&] { extension->endOutermostGuard(longTransition); });
    }
}

void UndoGuardStack::flush(bool quiet, LgFirstError& error) {
    State const oldState = _state;
    int const oldLongTxnNestingLevel = _longTxnNestingLevel;
    if (!isLogging() && !_stack.isNull())
        error.capture([&] {
            source.require(_macroCmd->isEmpty(), "_macroCmd->isEmpty()");
            if (!quiet) _stack->commandProcessedNoLog();
        });
    // More than once where listeners of the stack add commands while the macro is logged: a step of its own each time.
    while (!_macroCmd->isEmpty()) {
        RCShdPtr<CmMacroCommand> const collected = _macroCmd;
        error.capture([this] { logCollected(); });
        if (_macroCmd == collected) dropUnlogged(error);
        error.capture([&] {
            source.require(_state == oldState, "_state == oldState");
            source.require(
                _longTxnNestingLevel == oldLongTxnNestingLevel, "_longTxnNestingLevel == oldLongTxnNestingLevel");
            source.require(_shortTxnNestingLevel == 1, "_shortTxnNestingLevel == 1");
        });
    }
    _stack.reset();
}

void UndoGuardStack::logCollected() {
    RCShdPtr<CmMacroCommand> macro = CmMacroCommand::create();
    macro->setDescription(_macroCmd->getOwnDescription());
    macro.swap(_macroCmd);
    _stack->log(macro);
}

// Out of memory: executed commands cannot be logged, and a history without them would undo to states that never were.
void UndoGuardStack::dropUnlogged(LgFirstError& error) {
    _macroCmd->clear();
    _openScopes = 0; // their begin is gone
    error.capture([this] { _stack->clear(); });
}

void UndoGuardStack::execAndAdd(RCShdPtr<CmCommand> const& cmd) {
    // First, so that a command that was executed can always be collected.
    if (isLogging()) makeRoom();
    exec(cmd);
    collect(cmd);
}

void UndoGuardStack::add(RCShdPtr<CmCommand> const& cmd) {
    try {
        if (isLogging()) makeRoom();
    } catch (...) {
        LgFirstError error("A listener of the command stack");
        dropUnlogged(error);
        error.log();
        throw;
    }
    collect(cmd);
}

void UndoGuardStack::collect(RCShdPtr<CmCommand> const& cmd) {
    if (_state != NO_TXN && _state != BEGIN_TXN && _state != TXN && _state != END_TXN)
        source.abort("An undo command was added while no undo guard is open.");
    if (!isLogging()) return;
    cmd->setDisableExecutionOnRedo(_noRedoLevel != noLevel);
    _macroCmd->add(cmd);
}

void UndoGuardStack::beginScope(RCShdPtr<CmCommand> const& beginMark) {
    ++_openScopes;
    try {
        execAndAdd(beginMark);
    } catch (...) {
        --_openScopes;
        throw;
    }
}

// Collected first: whatever the target throws, no begin is left without its end.
void UndoGuardStack::endScope(RCShdPtr<CmCommand> const& endMark) {
    if (_openScopes > 0) {
        --_openScopes;
        collect(endMark);
    }
    exec(endMark);
}

void UndoGuardStack::exec(RCShdPtr<CmCommand> const& cmd) {
    NoLogScope const scope(*this);
    cmd->execute();
}

void UndoGuardStack::addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback) {
    _ownedEndCallbacks.push_back(callback);
    addEndCallback(callback);
}

} // namespace Ko
