#include "framework/command/src/cmGuardState.h"

#include "base/exBase.h"
#include "resmgt/envIntVar.h"

#include <string>

namespace Ko {

namespace {

EnvIntVar disallowNesting("KO_DISALLOW_LONG_TRANSITION_NESTING", 0, guardSource.file());

// The parameters that a nested guard may have, by the state; null where no guard is open.
constexpr char const* allowedNested[] = {nullptr, "param.get() == PiExecParam::NOT_TRANSITION",
    "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::BEGIN_TRANSITION", nullptr,
    "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::TRANSITION", nullptr,
    "param.get() == PiExecParam::NOT_TRANSITION || param.get() == PiExecParam::END_TRANSITION", nullptr};
// Where an outermost guard is opened, by the state.
constexpr char const* places[] = {"outside a long transaction", nullptr, nullptr,
    "after the begin of a long transaction", nullptr, "within a long transaction", nullptr,
    "after the end of an inner long transaction"};

} // namespace

// The texts name the levels inside the guard, one above those that the state still has.
void GuardState::refuseToEnter(PiExecParam::Transition transition, GuardKind kind) const {
    if (static_cast<unsigned>(_state) > END_TXN_OFG)
        guardSource.abort("The undo guards are in the unknown state " + std::to_string(_state) + ".");
    if (char const* const allowed = allowedNested[_state]) {
        requireNestedGuard();
        guardSource.fail(allowed);
    }
    isActive() ? requireGuardOfLongTransaction() : requireFirstGuard(kind);
    guardSource.abort("A guard with transition parameter " + std::to_string(transition) + " cannot be opened " +
                      places[_state] + ".");
}

void GuardState::requireFirstGuard(GuardKind kind) const {
    guardSource.require(_longTxnNestingLevel == 0, "_longTxnNestingLevel == 0");
    guardSource.require(_shortTxnNestingLevel == 0, "_shortTxnNestingLevel == 1");
    guardSource.require(permitsLogging(), "_noLogLevel == std::numeric_limits<int>::max()");
    guardSource.require(permitsRedo(), "_noRedoLevel == std::numeric_limits<int>::max()");
    guardSource.require(kind != GuardKind::NoRedo, "!noRedo");
}

void GuardState::requireGuardOfLongTransaction() const {
    guardSource.require(_longTxnNestingLevel > 0, "_longTxnNestingLevel > 0");
    guardSource.require(_shortTxnNestingLevel == 0, "_shortTxnNestingLevel == 1");
}

void GuardState::requireNestedGuard() const {
    if (_state == NO_TXN)
        guardSource.require(_longTxnNestingLevel == 0, "_longTxnNestingLevel == 0");
    else
        guardSource.require(_longTxnNestingLevel > 0, "_longTxnNestingLevel > 0");
    guardSource.require(_shortTxnNestingLevel > 0, "_shortTxnNestingLevel > 1");
}

void GuardState::beginLongTransaction() {
    if (_longTxnNestingLevel > 0 && disallowNesting.get() != 0)
        throw ExInternalError(guardSource.file(), __LINE__, "Nested long transitions are disallowed.");
    ++_longTxnNestingLevel;
}

void GuardState::refuseToLeave() const {
    guardSource.require(isActive(), "_state != OUT_OF_GUARD");
    guardSource.fail("_shortTxnNestingLevel > 0");
}

void GuardState::requireSame(GuardState const& other) const {
    guardSource.require(_state == other._state, "_state == oldState");
    guardSource.require(
        _longTxnNestingLevel == other._longTxnNestingLevel, "_longTxnNestingLevel == oldLongTxnNestingLevel");
    guardSource.require(_shortTxnNestingLevel == 1, "_shortTxnNestingLevel == 1");
}

} // namespace Ko
