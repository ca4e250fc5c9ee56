#pragma once

#include "base/assertions.h"
#include "pluginAPI/piExecParam.h"

#include <limits>

namespace Ko {

/// Raises the assertions of all guards.
inline constexpr AssertionSource guardSource{"framework\\command\\src\\cmUndoGuard"};

/// What a guard does to the commands that are executed within it.
enum class GuardKind {
    Plain,  ///< Collects them.
    NoLog,  ///< Drops them.
    NoRedo, ///< Collects them as not to be executed again on redo.
    Command ///< Drops them, as they are a part of the command that is running.
};

/// Which guards are open in the process, and how far a long transaction has come.
///
/// A value: assigning an earlier state rolls back. It knows neither commands nor hooks.
class GuardState {
public:
    /// Enters a further guard; `suspend` completes that for guards that are not plain.
    /// @throws ExAssertionFailed, ExProgramAborted, ExInternalError when such a guard may not be opened here; the state is
    /// unchanged then.
    void enter(PiExecParam::Transition transition, GuardKind kind) {
        State const next = getNext(transition);
        bool const isAllowed = next != none && (kind != GuardKind::NoRedo || isActive());
        if (!isAllowed || (kind == GuardKind::Plain && !isSound())) [[unlikely]]
            refuseToEnter(transition, kind);
        if (transition == PiExecParam::BEGIN_TRANSITION && !isGuardOpen()) beginLongTransaction();
        _state = next;
        ++_shortTxnNestingLevel;
    }
    /// Lets the innermost guard suspend logging or redo, unless a guard around it does.
    void suspend(GuardKind kind) noexcept {
        bool const suspendsLogging = kind == GuardKind::NoLog || kind == GuardKind::Command;
        if (suspendsLogging && _noLogLevel == noLevel) {
            _noLogLevel = _shortTxnNestingLevel;
            _isCommandRunning = kind == GuardKind::Command;
        }
        if (kind == GuardKind::NoRedo && _noRedoLevel == noLevel) _noRedoLevel = _shortTxnNestingLevel;
    }
    /// Leaves the innermost guard.
    /// @throws ExAssertionFailed when no guard is open.
    void leave() {
        if (!isGuardOpen()) [[unlikely]]
            refuseToLeave();
        if (--_shortTxnNestingLevel == 0) leaveTransaction();
        if (_shortTxnNestingLevel < _noLogLevel) _noLogLevel = noLevel;
        if (_shortTxnNestingLevel < _noRedoLevel) _noRedoLevel = noLevel;
    }

    /// Whether a guard is open or a long transaction is in progress.
    bool isActive() const noexcept { return _state != OUT_OF_GUARD; }
    /// Whether a guard is open.
    bool isGuardOpen() const noexcept { return _shortTxnNestingLevel > 0; }
    /// How many guards are open.
    int getNestingLevel() const noexcept { return _shortTxnNestingLevel; }
    /// Whether exactly one guard is open.
    bool isOutermost() const noexcept { return _shortTxnNestingLevel == 1; }
    /// Whether a long transaction is in progress.
    bool isLongTransition() const noexcept { return _state >= BEGIN_TXN; }
    /// Whether the guard that ends a long transaction is open or was the last one.
    bool isLongTransitionEnding() const noexcept { return _state == END_TXN || _state == END_TXN_OFG; }
    /// Whether a guard that continues or ends a long transaction is open: its description replaces the earlier one.
    bool renamesTransaction() const noexcept { return _state == TXN || _state == END_TXN; }
    /// Whether no open guard suspends logging.
    bool permitsLogging() const noexcept { return _noLogLevel == noLevel; }
    /// Whether logging is suspended because a command is running, which is itself logged or collected.
    bool isCommandRunning() const noexcept { return !permitsLogging() && _isCommandRunning; }
    /// Whether no open guard suspends redo.
    bool permitsRedo() const noexcept { return _noRedoLevel == noLevel; }

    /// @throws ExAssertionFailed unless state and levels, but for the suspensions, are those of `other`.
    void requireSame(GuardState const& other) const;

private:
    // OFG: out of guard, between two guards of a long transaction.
    enum State : int {
        none = -1,
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

    // The state inside a guard, by the state around it and the guard's parameter.
    static constexpr State table[8][4] = {
        // NOT_TRANSITION, BEGIN_TRANSITION, TRANSITION, END_TRANSITION
        {NO_TXN, BEGIN_TXN, none, none},      // OUT_OF_GUARD
        {NO_TXN, none, none, none},           // NO_TXN
        {BEGIN_TXN, BEGIN_TXN, none, none},   // BEGIN_TXN
        {BEGIN_TXN, BEGIN_TXN, TXN, END_TXN}, // BEGIN_TXN_OFG
        {TXN, none, TXN, none},               // TXN
        {TXN, none, TXN, END_TXN},            // TXN_OFG
        {END_TXN, none, none, END_TXN},       // END_TXN
        {END_TXN, none, none, END_TXN},       // END_TXN_OFG
    };

    State getNext(PiExecParam::Transition transition) const noexcept {
        bool const isInTable = static_cast<unsigned>(_state) < 8 && static_cast<unsigned>(transition) < 4;
        return isInTable ? table[_state][transition] : none;
    }
    // Whether levels and state agree, as `enter` and `leave` keep them.
    bool isSound() const noexcept {
        bool const isBetweenGuards = _state == OUT_OF_GUARD || (_state > NO_TXN && _state % 2 == 1);
        return isBetweenGuards == (_shortTxnNestingLevel == 0) && isLongTransition() == (_longTxnNestingLevel > 0);
    }
    void leaveTransaction() noexcept {
        if (_state == END_TXN) --_longTxnNestingLevel;
        bool const isEnded = _state == NO_TXN || (_state == END_TXN && _longTxnNestingLevel == 0);
        _state = isEnded ? OUT_OF_GUARD : static_cast<State>(_state + 1);
    }
    [[noreturn]] void refuseToEnter(PiExecParam::Transition transition, GuardKind kind) const;
    void requireFirstGuard(GuardKind kind) const;
    void requireGuardOfLongTransaction() const;
    void requireNestedGuard() const;
    void beginLongTransaction();
    [[noreturn]] void refuseToLeave() const;

    State _state = OUT_OF_GUARD;
    int _longTxnNestingLevel = 0;
    int _shortTxnNestingLevel = 0;
    int _noLogLevel = noLevel;
    int _noRedoLevel = noLevel;
    // Which kind of guard has set `_noLogLevel`.
    bool _isCommandRunning = false;
};

} // namespace Ko
