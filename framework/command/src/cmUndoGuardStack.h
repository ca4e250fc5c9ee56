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

    /// A place in the step, to which `rollBack` returns.
    struct Mark {
        int numCollected = 0;
        int nestingLevel = 0;
    };
    /// The present place.
    Mark getMark() const noexcept { return {_collector.getSize(), _state.getNestingLevel()}; }
    /// Takes back what the innermost guard has collected since `mark`.
    CmReplay rollBack(Mark const& mark);
    /// Takes back and ends the long transaction, between two of its guards.
    CmReplay abandonLongTransition();
    /// Calls `action` now, or after the guards and the transaction that are in progress.
    void callOutside(std::function<void()> action);
    /// The hooks; `updateWork` after subscribing.
    GuardHooks& getHooks() noexcept { return _hooks; }
    /// Notes whether opening or closing a guard has to call hooks.
    void updateWork() noexcept { _hasWork = !_hooks.isEmpty() || _collector.getStack(); }

    /// Whether commands are collected now.
    bool isLogging() const noexcept { return _state.permitsLogging() && _collector.getStack(); }

    /// As in `GuardHooks`:
    void addExtension(RCShdPtr<CmUndoGuardExtension> extension);
    void addEndCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& callback);
    void addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback);

private:
    void beginOutermost(GuardKind kind) override;
    void endOutermost(bool quiet, LgFirstError& error) override;

    void attach(
        StepCollector::Attachment& attachment, RCShdPtr<CmCommandStack> const& stack, LiString const& description);
    void takeBack(GuardState const& around, StepCollector::Attachment& attachment) noexcept;
    void requireOpenGuard() const;
    void collect(RCShdPtr<CmCommand> cmd);
    void noteUnlogged();
    void close(bool quiet, GuardState const& outside, LgFirstError& error);
    void beginTransaction();
    void endTransaction(LgFirstError& error);

    static OPtr<UndoGuardStack> _owned;

    StepCollector _collector;
    GuardHooks _hooks;
    bool _isCallingOutside = false;
};

} // namespace Ko
