#pragma once

#include "base/oPtr.h"
#include "base/rcWeakPtr.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuardExtension.h"
#include "pluginAPI/piAppThread.h"
#include "pluginAPI/piExecParam.h"
#include "resmgt/lgFirstError.h"

#include <deque>
#include <limits>

namespace Ko {

/// The state that all guards of the process share: which transaction is going on, how deep guards nest, and what was
/// collected so far. It exists while the package "command" is initialised.
class UndoGuardStack {
public:
    static void initialize();
    static void finalize();
    /// @throws ExAssertionFailed on another thread than the application's, or while the package is not initialised.
    static UndoGuardStack& getInstance() {
        requireUsable();
        return *_instance;
    }

    enum class Kind { Plain, NoLog, NoRedo };

    void enter(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param, Kind kind);
    /// Enters a guard that carries neither stack nor transition.
    void enterScope(Kind kind) {
        if (_shortTxnNestingLevel == 0 && !enterQuietly(kind))
            return enter(nullptr, {}, PiExecParam::NOT_TRANSITION, kind);
        // Nested, such a guard is allowed in every state.
        ++_shortTxnNestingLevel;
        markLevel(kind);
    }
    /// Closes the innermost guard whatever goes wrong; that is thrown at the end, or logged while another exception passes
    /// through the guard.
    static void leave(bool quiet) {
        if (!PiAppThread::isCurrent() || !leaveSimply()) [[unlikely]]
            leaveWithHooks(quiet);
    }

    /// What `CmUndoGuardNoLog(false)` is, for this library's own use on the stack: every execution, undo and redo opens
    /// one. It ends on the thread on which it began.
    class NoLogScope {
    public:
        explicit NoLogScope(UndoGuardStack& guards = getInstance()) { guards.enterScope(Kind::NoLog); }
        ~NoLogScope() noexcept(false) {
            if (!leaveSimply()) [[unlikely]]
                leaveWithHooks(false);
        }
        NoLogScope(NoLogScope const&) = delete;
        NoLogScope& operator=(NoLogScope const&) = delete;
    };

    void execAndAdd(RCShdPtr<CmCommand> const& cmd);
    void add(RCShdPtr<CmCommand> const& cmd);
    void exec(RCShdPtr<CmCommand> const& cmd);
    void beginScope(RCShdPtr<CmCommand> const& beginMark);
    void endScope(RCShdPtr<CmCommand> const& endMark);

    bool isLogging() const noexcept { return _noLogLevel == noLevel && !_stack.isNull(); }
    bool isGuardActive() const noexcept { return _state != OUT_OF_GUARD; }
    bool isLongTransition() const noexcept { return isLong(_state); }
    bool isLongTransitionEnding() const noexcept { return _state == END_TXN || _state == END_TXN_OFG; }

    void addEndCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& callback) { _endCallbacks.push_back(callback); }
    /// As above, and keeps the handler alive until then.
    void addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback);
    void addExtension(RCShdPtr<CmUndoGuardExtension> extension) { _extensions.push_back(std::move(extension)); }

private:
    /// OFG: out of guard, between two guards of a long transaction.
    enum State {
        OUT_OF_GUARD = 0,
        NO_TXN = 1,
        BEGIN_TXN = 2,
        BEGIN_TXN_OFG = 3,
        TXN = 4,
        TXN_OFG = 5,
        END_TXN = 6,
        END_TXN_OFG = 7
    };

    static constexpr int noLevel = std::numeric_limits<int>::max();

    class Entry;

    static void requireUsable() {
        if (!PiAppThread::isCurrent() || !_instance) [[unlikely]]
            refuse();
    }
    [[noreturn]] static void refuse();
    static void leaveWithHooks(bool quiet);

    static bool isLong(State state) noexcept { return state >= BEGIN_TXN && state <= END_TXN_OFG; }

    void advance(PiExecParam::Transition transition, bool noRedo);
    void requireFirstGuard(bool noRedo) const;
    void requireGuardOfLongTransaction() const;
    void requireNestedGuard() const;
    void beginLongTransaction();

    // Every single undo and redo opens an outermost guard that nothing is attached to, and to which nobody listens; its way
    // in and out is short.
    bool enterQuietly(Kind kind) noexcept {
        if (kind != Kind::NoLog || _state != OUT_OF_GUARD || !_extensions.empty()) return false;
        _state = NO_TXN;
        _exceptionsAtEntry = 0;
        return true;
    }
    // Leaves a guard within others, or an outermost one to which nothing was attached.
    static bool leaveSimply() noexcept { return _instance && _instance->leaveIfSimple(); }
    bool leaveIfSimple() noexcept {
        if (_shortTxnNestingLevel <= 1) {
            if (_state != NO_TXN || !_stack.isNull() || !_endCallbacks.empty() || !_extensions.empty()) return false;
            _state = OUT_OF_GUARD;
        }
        leaveLevel();
        return true;
    }
    void markLevel(Kind kind) noexcept {
        if (kind == Kind::NoLog && _noLogLevel == noLevel) _noLogLevel = _shortTxnNestingLevel;
        if (kind == Kind::NoRedo && _noRedoLevel == noLevel) _noRedoLevel = _shortTxnNestingLevel;
    }
    void leaveLevel() noexcept {
        --_shortTxnNestingLevel;
        if (_shortTxnNestingLevel < _noLogLevel) _noLogLevel = noLevel;
        if (_shortTxnNestingLevel < _noRedoLevel) _noRedoLevel = noLevel;
    }
    void makeRoom() { _macroCmd->makeRoom(1 + _openScopes); }
    void collect(RCShdPtr<CmCommand> const& cmd);
    void leaveOutermost(bool quiet);
    void closeOutermost(bool quiet, LgFirstError& error);
    void callEndCallbacks(LgFirstError& error);
    void endExtensions(std::size_t count, LgFirstError& error);
    void flush(bool quiet, LgFirstError& error);
    void logCollected();
    void dropUnlogged(LgFirstError& error);

    static OPtr<UndoGuardStack> _instance;

    State _state = OUT_OF_GUARD;
    int _longTxnNestingLevel = 0;
    int _shortTxnNestingLevel = 0;
    int _noLogLevel = noLevel;
    int _noRedoLevel = noLevel;
    RCShdPtr<CmCommandStack> _stack;
    RCShdPtr<CmMacroCommand> _macroCmd = CmMacroCommand::create();
    // Scopes that have begun, for the ends of which room is kept.
    std::size_t _openScopes = 0;
    Vector<RCShdPtr<CmUndoGuardExtension>> _extensions;
    std::deque<RCWeakPtr<CbHandler<CbEmptyType>>> _endCallbacks;
    Vector<RCShdPtr<CbHandler<CbEmptyType>>> _ownedEndCallbacks;
    // How many exceptions were passing when the outermost guard was entered; 0 where that was not asked.
    int _exceptionsAtEntry = 0;
};

} // namespace Ko
