#include "framework/command/src/cmStepCollector.h"

#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/src/cmLog.h"

#include <string>
#include <utility>

namespace Ko {

StepCollector::~StepCollector() {
    if (_macro->isEmpty()) return;
    reportUnlogged();
    _stack->setOpenStep(nullptr);
}

void StepCollector::Attachment::adopt(RCShdPtr<CmCommandStack> const& stack) noexcept {
    _collector._stack = stack;
    _hasAdopted = true;
}

void StepCollector::Attachment::describe(LiString const& description) {
    LiString before = _collector._macro->getOwnDescription();
    _collector._macro->setDescription(description);
    if (!_description) _description = std::move(before);
}

void StepCollector::Attachment::takeBack(LgFirstError& error) noexcept {
    if (_hasAdopted && _collector.isEmpty()) _collector._stack.reset();
    if (_description) error.capture([this] { _collector._macro->setDescription(*_description); });
}

void StepCollector::collect(RCShdPtr<CmCommand> cmd, bool isSkippedOnRedo) {
    cmd->setDisableExecutionOnRedo(isSkippedOnRedo);
    _macro->add(std::move(cmd));
    _stack->setOpenStep(_macro.get());
    _stack->updateCleanMark();
}

void StepCollector::noteUnlogged() {
    RCShdPtr<CmCommandStack> const stack = _stack;
    _isOutdated = !isEmpty();
    stack->noteUnlogged();
}

bool StepCollector::closeScope() noexcept {
    if (_openScopes == 0) return false;
    --_openScopes;
    return true;
}

RCShdPtr<CmCommandStack> StepCollector::flush(GuardState const& state, bool isNotified, LgFirstError& error) {
    GuardState const before = state;
    if (!state.permitsLogging() && _stack)
        error.capture([&] {
            guardSource.require(isEmpty(), "_macroCmd->isEmpty()");
            if (isNotified) _stack->commandProcessedNoLog();
        });
    while (!isEmpty()) {
        RCShdPtr<CmMacroCommand> const collected = _macro;
        error.capture([this] { logCollected(); });
        if (_macro == collected) giveUp();
        error.capture([&] { state.requireSame(before); });
    }
    _macro->setDescription({});
    return std::move(_stack);
}

void StepCollector::requireNoScope() const {
    if (_openScopes > 0)
        throw ExInternalError(
            guardSource.file(), __LINE__, "A step cannot be taken back while a scope of commands is open.");
}

// A command leaves the step before it runs, so that it can do anything to the step.
CmReplay StepCollector::rollBack(int count) {
    requireNoScope();
    if (getSize() <= count) return {};
    RCShdPtr<CmCommandStack> const stack = _stack;
    while (getSize() > count) {
        RCShdPtr<CmCommand> const command = _macro->removeLast();
        CmLog::write(CmLog::commandFlow, "Undoing ", *command);
        try {
            CmCommandStack::unexecuteStatic(command);
        } catch (CmEx::ExCommandFailure const&) {
            CmLog::write(CmLog::commandFailure, "Undoing ", *command, " failed.\n");
            return cut(*command, std::current_exception());
        } catch (...) {
            CmLog::write(CmLog::unexpectedFailure, "Undoing ", *command, " failed unexpectedly\n");
            cut(*command, std::current_exception());
            throw;
        }
    }
    if (isEmpty()) {
        stack->setOpenStep(nullptr);
        _isOutdated = false;
    }
    stack->updateCleanMark();
    return {CmReplay::Outcome::Done, nullptr, 0};
}

CmReplay StepCollector::cut(CmCommand& failed, std::exception_ptr const& error) {
    _stack->setOpenStep(nullptr);
    CmReplay result{CmReplay::Outcome::Failed, CmCommandStack::toExBase(error), _stack->getStackHeight() - 1};
    _macro->clear();
    _isOutdated = false;
    _stack->cutByFailure(failed, error);
    return result;
}

void StepCollector::logCollected() {
    RCShdPtr<CmMacroCommand> macro = CmMacroCommand::create();
    macro->setDescription(_macro->getOwnDescription());
    macro.swap(_macro);
    _stack->setOpenStep(nullptr);
    _stack->append(std::move(macro), std::exchange(_isOutdated, false));
}

void StepCollector::giveUp() noexcept {
    if (!isEmpty()) reportUnlogged();
    _openScopes = 0; // their begin marks are dropped
    _isOutdated = false;
    _stack->setOpenStep(nullptr);
    _macro->clear();
    _stack->giveUpHistory();
}

void StepCollector::reportUnlogged() const noexcept {
    CmLog::writeLine(CmLog::unexpectedFailure, [this] {
        return "The step \"" + CmLog::describe(*_macro) + "\" is never logged: " + std::to_string(_macro->getSize()) +
               (_macro->getSize() == 1 ? " command is lost." : " commands are lost.");
    });
}

} // namespace Ko
