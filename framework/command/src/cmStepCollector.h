#pragma once

#include "framework/command/cmCommandStack.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/src/cmGuardState.h"
#include "resmgt/lgFirstError.h"

#include <exception>
#include <optional>

namespace Ko {

/// Collects the commands of one step and logs them as a macro on the step's stack.
class StepCollector {
public:
    StepCollector() = default;
    /// Reports a step that was never logged.
    ~StepCollector();
    StepCollector(StepCollector const&) = delete;
    StepCollector& operator=(StepCollector const&) = delete;

    /// The stack that logs the step; null until a guard brings one.
    RCShdPtr<CmCommandStack> const& getStack() const noexcept { return _stack; }
    bool isEmpty() const noexcept { return _macro->isEmpty(); }

    /// What one guard changes when it opens, so that it can be taken back.
    class Attachment {
    public:
        explicit Attachment(StepCollector& collector) noexcept : _collector(collector) {}
        Attachment(Attachment const&) = delete;
        Attachment& operator=(Attachment const&) = delete;

        void adopt(RCShdPtr<CmCommandStack> const& stack) noexcept;
        void describe(LiString const& description);
        /// Keeps the stack if commands are collected for it.
        void takeBack(LgFirstError& error) noexcept;

    private:
        StepCollector& _collector;
        std::optional<LiString> _description;
        bool _hasAdopted = false;
    };

    /// Makes room for one command and for the end marks of all open scopes, so that collecting them cannot fail.
    void makeRoom() { _macro->makeRoom(1 + _openScopes); }
    /// @param isSkippedOnRedo whether a redo does not execute the command.
    void collect(RCShdPtr<CmCommand> cmd, bool isSkippedOnRedo);
    /// Called after a command was executed for the step's stack that is not collected.
    void noteUnlogged();
    /// Keeps room for the end mark of a scope.
    void openScope() noexcept { ++_openScopes; }
    /// @returns whether a scope was open; false when its begin mark was dropped.
    bool closeScope() noexcept;

    /// How many commands are collected.
    int getSize() const noexcept { return _macro->getSize(); }
    /// Unexecutes the collected commands from the last one down to position `count`, and forgets them. When one of them fails, all that
    /// is collected is dropped together with the history: no position of it leads to a known state.
    /// @throws what a command throws, unless it is a `CmEx::ExCommandFailure`; ExInternalError while a scope is open.
    CmReplay rollBack(int count);
    /// @throws ExInternalError while a scope is open.
    void requireNoScope() const;

    /// Logs what was collected; more than one step if listeners add commands meanwhile. Afterwards the collector is empty.
    /// @param state of the guards, the outermost of which is open; @param isNotified whether listeners are notified of
    /// commands that were executed without being collected.
    /// @returns the step's stack, so that the caller can release it when everything else is done.
    [[nodiscard]] RCShdPtr<CmCommandStack> flush(GuardState const& state, bool isNotified, LgFirstError& error);
    /// Drops what was collected, with the history of the stack: it lacks executed commands and would lead to wrong states.
    void giveUp() noexcept;

private:
    void logCollected();
    CmReplay cut(CmCommand& failed, std::exception_ptr const& error);
    void reportUnlogged() const noexcept;

    RCShdPtr<CmCommandStack> _stack;
    RCShdPtr<CmMacroCommand> _macro = CmMacroCommand::create();
    std::size_t _openScopes = 0;
    // Whether a command was collected before one that is not.
    bool _isOutdated = false;
};

} // namespace Ko
