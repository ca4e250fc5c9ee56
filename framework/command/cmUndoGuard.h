#pragma once

#include "base/rcWeakPtr.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmUndoGuardExtension.h"
#include "pluginAPI/piExecParam.h"
#include "pluginAPI/piUndoGuard.h"
#include "resmgt/msgServer.h"

#include <functional>

namespace Ko {

class UndoGuardStack;

/// Groups all commands that are executed while it is open into one undoable step.
///
/// Guards nest; when the outermost one closes, the collected commands are logged on its stack as one macro command. A
/// long transaction (`PiExecParam`) spans several outermost guards, from the one that begins it to the one that ends it.
/// It is logged as one step at its end, under the last description that a transition or the end gave.
///
///     CmUndoGuard guard(stack, "Align Layers");
///     for (Layer& layer : layers)
///         guard.execAndAddUndoCommand(MoveCmd::create(layer, target));
///
/// Application thread only, which every operation asserts first; guards close in the reverse order of opening. A guard that
/// cannot be entered leaves everything as it was. The destructor may throw what a listener or an extension throws, with the
/// commands logged and the guard closed; while another exception passes through its scope, it logs the error instead.
class KO_FRAMEWORK_API CmUndoGuard : public PiUndoGuardProtocol {
public:
    /// @param stack logs the step; null leaves the choice to a guard inside this one.
    /// @param param whether the guard belongs to a long transaction; by default it does not.
    /// @throws ExAssertionFailed, ExProgramAborted when a guard with this parameter or stack may not be opened now;
    /// ExInternalError when long transactions may not nest (`KO_DISALLOW_LONG_TRANSITION_NESTING` is set and not 0).
    [[nodiscard]] CmUndoGuard(
        RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param = {});
    /// Takes the description from a message catalogue.
    [[nodiscard]] CmUndoGuard(
        RCShdPtr<CmCommandStack> const& stack, MsgSubscription const& description, PiExecParam const& param = {});
    ~CmUndoGuard() noexcept(false) override;

    /// Executes the command and collects it.
    void execAndAddUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Collects a command that the caller has performed; drops it while logging is suspended.
    /// @throws ExProgramAborted when no guard is open.
    void addUndoCommand(RCShdPtr<CmCommand> const& cmd);
    /// Executes the command without collecting it.
    void execUndoCommand(RCShdPtr<CmCommand> const& cmd);

    /// Whether commands are collected now.
    [[nodiscard]] static bool isLogging();
    /// Whether a guard is open or a long transaction is in progress.
    [[nodiscard]] static bool isGuardActive();
    /// Whether a long transaction is in progress.
    [[nodiscard]] static bool isLongTransition();
    /// Whether a guard that ends a long transaction is open, or was the last one while an outer long transaction continues.
    [[nodiscard]] static bool isLongTransitionEnding();

    /// Calls `cb` once, when the outermost guard next closes, if it still exists then.
    static void addEndOfOutermostGuardCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& cb);
    /// Calls `callable` whenever an outermost guard closes, after the callbacks above.
    [[nodiscard]] static CbSubscription onEndOfOutermostGuard(std::function<void()> callable);
    /// Registers an extension until the package "command" is finalised. Begin hooks are called in the order of registration,
    /// end hooks in reverse.
    static void registerUndoGuardExtension(RCShdPtr<CmUndoGuardExtension> ext);

    /// Unexecutes what was collected since this guard was entered, the last command first, and logs none of it. What can be redone
    /// stays. The guard stays open.
    ///
    /// A command that fails is treated as in `CmCommandStack::undo`: a `CmEx::ExCommandFailure` is an answer, anything else passes on,
    /// and the history is dropped with the whole step, since no position of it leads to a known state.
    /// @throws ExAssertionFailed when a guard is open inside this one; ExInternalError while a `PiUndoScope` is open.
    CmReplay rollBack();
    /// Takes back a whole long transaction, between two of its guards, and ends it: the document and the history are as before its
    /// begin. Failures are treated as by `rollBack`.
    /// @throws ExAssertionFailed when a guard is open or no long transaction is in progress; ExInternalError while a `PiUndoScope`
    /// is open.
    static CmReplay abandonLongTransition();

    /// Calls `action` outside all guards and transactions: now if there are none, else when the present one has been logged, taken
    /// back or abandoned. For what an event of a job wants to change while the user drags. Actions are called in the order in which
    /// they were handed over. What a postponed action throws reaches the code that closes the guard.
    static void callOutside(std::function<void()> action);
    /// Calls `callable` with true when a guard or a long transaction begins outside all others, and with false when it has ended
    /// and is logged, taken back or abandoned. Guards that only suspend logging do not count. What `callable` throws at a begin is
    /// logged.
    [[nodiscard]] static CbSubscription onTransaction(std::function<void(bool hasBegun)> callable);

private:
    void enter(UndoGuardStack& guards, RCShdPtr<CmCommandStack> const& stack, LiString const& description,
        PiExecParam const& param);

    int _numCollectedBefore = 0;
    int _nestingLevel = 0;
};

} // namespace Ko
