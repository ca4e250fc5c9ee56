#pragma once

#include "base/oPtr.h"
#include "framework/command/src/cmGuardHooks.h"
#include "framework/command/src/cmOpenGuards.h"
#include "framework/command/src/cmStepCollector.h"

namespace Ko {

/// Ties the state of the guards, the collected step and the hooks together. It exists while the package "command" is
/// initialised.
class UndoGuardStack final : public OpenGuards {
public:
    static void initialize();
    /// Logs at level 0 what was collected and never logged.
    static void finalize();
    /// As `OpenGuards::getInstance`.
    static UndoGuardStack& getInstance() { return static_cast<UndoGuardStack&>(OpenGuards::getInstance()); }

    using OpenGuards::enter;
    /// Opens a guard that may bring a stack and a transition.
    void enter(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param);

    /// The three operations of every guard:
    void execAndAdd(RCShdPtr<CmCommand> const& cmd);
    void add(RCShdPtr<CmCommand> const& cmd);
    void exec(RCShdPtr<CmCommand> const& cmd);

    /// Executes and collects the mark that begins a scope.
    void beginScope(RCShdPtr<CmCommand> const& beginMark);
    /// Collects and executes the mark that ends it.
    void endScope(RCShdPtr<CmCommand> const& endMark);

    /// Whether commands are collected now.
    bool isLogging() const noexcept { return _state.permitsLogging() && _collector.getStack(); }

    /// As in `GuardHooks`:
    void addExtension(RCShdPtr<CmUndoGuardExtension> extension);
    void addEndCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& callback);
    void addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback);

private:
    void beginOutermost(GuardState const& around) override;
    void endOutermost(bool quiet, GuardState const& outside, LgFirstError& error) override;

    void attach(
        StepCollector::Attachment& attachment, RCShdPtr<CmCommandStack> const& stack, LiString const& description);
    void takeBack(GuardState const& around, StepCollector::Attachment& attachment) noexcept;
    void requireOpenGuard() const;
    void collect(RCShdPtr<CmCommand> cmd);
    void updateWork() noexcept { _hasWork = !_hooks.isEmpty() || _collector.getStack(); }

    static OPtr<UndoGuardStack> _owned;

    StepCollector _collector;
    GuardHooks _hooks;
};

} // namespace Ko
