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
        if (!_state.isGuardOpen()) _exceptionsAtEntry = 0;
        if (_hasWork && !_state.isGuardOpen()) [[unlikely]]
            beginOutermost(kind);
        else
            _state.enter(PiExecParam::NOT_TRANSITION, kind);
        _state.suspend(kind);
    }
    /// Closes the innermost guard, whatever fails. Throws the first error at the end, or logs it while another exception
    /// passes through the guard's scope.
    /// @param quiet whether listeners are not notified of commands that were executed without being collected.
    static void leave(bool quiet) {
        if (!PiAppThread::isCurrent()) [[unlikely]]
            return leaveWithWork(quiet);
        leaveOnSameThread(quiet);
    }

    /// Suspends logging like `CmUndoGuardNoLog(false)` while a command runs. Every execution, undo and redo opens one, on the stack of
    /// its function.
    class [[nodiscard]] NoLogScope {
    public:
        NoLogScope() { getInstance().enter(GuardKind::Command); }
        ~NoLogScope() noexcept(false) { leaveOnSameThread(false); }
        NoLogScope(NoLogScope const&) = delete;
        NoLogScope& operator=(NoLogScope const&) = delete;
    };

    /// Which guards are open.
    GuardState const& getState() const noexcept { return _state; }

protected:
    OpenGuards() = default;
    virtual ~OpenGuards() = default;
    static void setInstance(OpenGuards* instance) noexcept { _instance = instance; }

    /// Enters an outermost guard when there is work. If it throws, everything is as it was.
    virtual void beginOutermost(GuardKind kind) = 0;
    /// Closes the outermost guard. Leaves what hooks and listeners throw in `error`.
    virtual void endOutermost(bool quiet, LgFirstError& error) = 0;

    GuardState _state;
    // Whether opening or closing an outermost guard takes more than a change of the state.
    bool _hasWork = false;
    // How many exceptions were passing when an outermost guard was entered that had work then or was plain; otherwise 0.
    int _exceptionsAtEntry = 0;

private:
    static bool isUsable() noexcept { return PiAppThread::isCurrent() && _instance; }
    [[noreturn]] static void refuse();
    static void leaveOnSameThread(bool quiet) {
        if (!_instance || !_instance->isLeftByStateAlone()) [[unlikely]]
            return leaveWithWork(quiet);
        _instance->_state.leave();
    }
    bool isLeftByStateAlone() const noexcept { return _state.isGuardOpen() && !(_hasWork && _state.isOutermost()); }
    static void leaveWithWork(bool quiet);

    static OpenGuards* _instance;
};

} // namespace Ko
