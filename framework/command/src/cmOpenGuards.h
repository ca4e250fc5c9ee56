#pragma once

#include "framework/command/src/cmGuardState.h"
#include "pluginAPI/piAppThread.h"
#include "resmgt/lgFirstError.h"

namespace Ko {

/// The guards that are open in the process: their state, and how a guard without a stack opens and closes.
///
/// The history and the commands need nothing else of the guards. The derived class adds what an outermost guard does
/// when it opens and closes. One object exists while the package "command" is initialised.
class OpenGuards {
public:
    OpenGuards(OpenGuards const&) = delete;
    OpenGuards& operator=(OpenGuards const&) = delete;

    /// @throws ExAssertionFailed on another thread than the application's, or while the package is not initialised.
    static OpenGuards& getInstance() {
        requireUsable();
        return *_instance;
    }
    /// Throws as `getInstance` does.
    static void requireUsable() {
        if (!isUsable()) [[unlikely]]
            refuse();
    }

    /// Opens a guard that has neither a stack nor a transition.
    void enter(GuardKind kind) {
        GuardState const around = _state;
        _state = around.entered(PiExecParam::NOT_TRANSITION, kind);
        if (_state.isOutermost()) {
            _exceptionsAtEntry = 0;
            if (_hasWork) [[unlikely]]
                beginOutermost(around);
        }
        _state = _state.suspended(kind);
    }
    /// Closes the innermost guard, whatever fails. Throws the first error at the end, or logs it while another exception
    /// passes through the guard's scope.
    /// @param quiet whether listeners are not notified of commands that were executed without being collected.
    static void leave(bool quiet) {
        if (!isUsable() || !_instance->isLeftByStateAlone()) [[unlikely]]
            return leaveWithWork(quiet);
        _instance->_state = _instance->_state.left();
    }

    /// Suspends logging like `CmUndoGuardNoLog(false)`. Every execution, undo and redo opens one.
    class [[nodiscard]] NoLogScope {
    public:
        NoLogScope() { getInstance().enter(GuardKind::NoLog); }
        ~NoLogScope() noexcept(false) { leave(false); }
        NoLogScope(NoLogScope const&) = delete;
        NoLogScope& operator=(NoLogScope const&) = delete;
    };

    /// Which guards are open.
    GuardState const& getState() const noexcept { return _state; }

protected:
    OpenGuards() = default;
    virtual ~OpenGuards() = default;
    static void setInstance(OpenGuards* instance) noexcept { _instance = instance; }

    /// Completes the opening of an outermost guard, entered from the state `around`. If it throws, it has restored that.
    virtual void beginOutermost(GuardState const& around) = 0;
    /// Closes the outermost guard; afterwards the state is `outside`. Leaves what hooks and listeners throw in `error`.
    virtual void endOutermost(bool quiet, GuardState const& outside, LgFirstError& error) = 0;

    GuardState _state;
    // Whether opening or closing an outermost guard takes more than a change of the state.
    bool _hasWork = false;
    // How many exceptions were passing when the outermost guard was entered; 0 for a guard that had no work then.
    int _exceptionsAtEntry = 0;

private:
    static bool isUsable() noexcept { return PiAppThread::isCurrent() && _instance; }
    [[noreturn]] static void refuse();
    bool isLeftByStateAlone() const noexcept { return _state.isGuardOpen() && !(_hasWork && _state.isOutermost()); }
    static void leaveWithWork(bool quiet);

    static OpenGuards* _instance;
};

} // namespace Ko
