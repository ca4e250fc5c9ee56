#pragma once

#include "base/assertions.h"
#include "pluginAPI/piExecParam.h"

#include <limits>

namespace Ko {

/// Raises the assertions of all guards.
inline constexpr AssertionSource guardSource{"framework\\command\\src\\cmUndoGuard"};

/// What a guard does to the commands that are executed within it: collect them, drop them, or collect them as not to be
/// executed again on redo.
enum class GuardKind { Plain, NoLog, NoRedo };

/// Which guards are open in the process, and how far a long transaction has come.
///
/// A value: entering and leaving a guard give the next state, and assigning an earlier state rolls back. It knows
/// neither commands nor hooks.
class GuardState {
public:
    /// The state inside a further guard; `suspended` completes it for guards that are not plain.
    /// @throws ExAssertionFailed, ExProgramAborted, ExInternalError when such a guard may not be opened here.
    GuardState entered(PiExecParam::Transition transition, GuardKind kind) const {
        GuardState inside = *this;
        inside._state = getNext(transition);
        ++inside._shortTxnNestingLevel;
        if (inside._state == none || !isSound() || (!isActive() && kind == GuardKind::NoRedo)) [[unlikely]]
            inside.refuseToEnter(*this, transition, kind);
        if (transition == PiExecParam::BEGIN_TRANSITION && inside.isOutermost()) inside.beginLongTransaction();
        return inside;
    }
    /// The state in which the innermost guard suspends logging or redo, unless one around it does.
    GuardState suspended(GuardKind kind) const noexcept {
        GuardState inside = *this;
        if (kind == GuardKind::NoLog && _noLogLevel == noLevel) inside._noLogLevel = _shortTxnNestingLevel;
        if (kind == GuardKind::NoRedo && _noRedoLevel == noLevel) inside._noRedoLevel = _shortTxnNestingLevel;
        return inside;
    }
    /// The state after the innermost guard.
    /// @throws ExAssertionFailed when no guard is open.
    GuardState left() const {
        if (!isGuardOpen()) [[unlikely]]
            refuseToLeave();
        GuardState outside = *this;
        if (--outside._shortTxnNestingLevel == 0) outside.leaveTransaction();
        if (outside._shortTxnNestingLevel < _noLogLevel) outside._noLogLevel = noLevel;
        if (outside._shortTxnNestingLevel < _noRedoLevel) outside._noRedoLevel = noLevel;
        return outside;
    }

    /// Whether a guard is open or a long transaction is in progress.
    bool isActive() const noexcept { return _state != OUT_OF_GUARD; }
    /// Whether a guard is open.
    bool isGuardOpen() const noexcept { return _shortTxnNestingLevel > 0; }
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
    // Levels and state agree. Only `entered` and `left` change them, so anything else is a corrupted state.
    bool isSound() const noexcept {
        bool const isBetweenGuards = _state == OUT_OF_GUARD || (_state > NO_TXN && _state % 2 == 1);
        return isBetweenGuards == (_shortTxnNestingLevel == 0) && isLongTransition() == (_longTxnNestingLevel > 0);
    }
    void leaveTransaction() noexcept {
        if (_state == END_TXN) --_longTxnNestingLevel;
        bool const isEnded = _state == NO_TXN || (_state == END_TXN && _longTxnNestingLevel == 0);
        _state = isEnded ? OUT_OF_GUARD : static_cast<State>(_state + 1);
    }
    [[noreturn]] void refuseToEnter(GuardState const& around, PiExecParam::Transition transition, GuardKind kind) const;
    void requireFirstGuard(GuardState const& around, GuardKind kind) const;
    void requireGuardOfLongTransaction() const;
    void requireNestedGuard(GuardState const& around) const;
    void beginLongTransaction();
    [[noreturn]] void refuseToLeave() const;

    State _state = OUT_OF_GUARD;
    int _longTxnNestingLevel = 0;
    int _shortTxnNestingLevel = 0;
    int _noLogLevel = noLevel;
    int _noRedoLevel = noLevel;
};

} // namespace Ko
