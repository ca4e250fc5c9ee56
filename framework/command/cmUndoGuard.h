#pragma once

#include "base/rcWeakPtr.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmUndoGuardExtension.h"
#include "pluginAPI/piExecParam.h"
#include "pluginAPI/piUndoGuard.h"
#include "resmgt/msgServer.h"

namespace Ko {

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
    /// Registers an extension until the package "command" is finalised. Begin hooks are called in the order of registration,
    /// end hooks in reverse.
    static void registerUndoGuardExtension(RCShdPtr<CmUndoGuardExtension> ext);
};

} // namespace Ko
