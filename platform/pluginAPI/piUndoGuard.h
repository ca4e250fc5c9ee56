#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/cbDispatcher.h"
#include "pluginAPI/piCommandStack.h"
#include "pluginAPI/piExecParam.h"
#include "pluginAPI/pluginAPIApi.h"
#include "resmgt/liString.h"

#include <array>
#include <cstddef>

namespace Ko {

/// Base class of all guard objects. The destructor closes the guard, which logs commands and calls listeners; it may throw.
/// While another exception passes through its scope, it logs the error instead, so that the caller sees the first one.
class KO_PLUGINAPI_API PiUndoGuardProtocol {
public:
    virtual ~PiUndoGuardProtocol() noexcept(false);
    PiUndoGuardProtocol(PiUndoGuardProtocol const&) = delete;
    PiUndoGuardProtocol& operator=(PiUndoGuardProtocol const&) = delete;

protected:
    PiUndoGuardProtocol() noexcept = default;
};

/// The memory inside a facade in which the factory constructs the guard object.
class KO_PLUGINAPI_API PiUndoGuardStorage {
public:
    PiUndoGuardStorage() noexcept = default;
    /// Destroys the guard object; throws what its destructor throws.
    ~PiUndoGuardStorage() noexcept(false) {
        if (_guard) _guard->~PiUndoGuardProtocol();
    }
    PiUndoGuardStorage(PiUndoGuardStorage const&) = delete;
    PiUndoGuardStorage& operator=(PiUndoGuardStorage const&) = delete;

    /// Constructs the guard object. To be called once.
    template <class Guard, class... Args>
    void emplace(Args&&... args) {
        static_assert(sizeof(Guard) <= size && alignof(Guard) <= alignof(std::max_align_t));
        _guard = ::new (static_cast<void*>(_room.data())) Guard(static_cast<Args&&>(args)...);
    }

private:
    static constexpr std::size_t size = 32;

    alignas(std::max_align_t) std::array<std::byte, size> _room;
    PiUndoGuardProtocol* _guard = nullptr;
};

/// Groups all commands that are executed while it is open into one undoable step, for code that only knows this interface.
/// Application thread only; guards close in the reverse order of opening.
class KO_PLUGINAPI_API PiUndoGuard {
public:
    /// @param stack logs the step; it must come from the framework.
    /// @throws ExAssertionFailed before the package "command" is initialised, and what entering a guard throws.
    [[nodiscard]] PiUndoGuard(
        RCShdPtr<PiCommandStack> const& stack, LiString const& description, PiExecParam const& param = {});
    /// @param callback is called once, when the outermost guard closes, also if this guard is nested.
    [[nodiscard]] PiUndoGuard(RCShdPtr<PiCommandStack> const& stack, LiString const& description,
        PiExecParam const& param, RCShdPtr<CbHandler<CbEmptyType>> const& callback);

private:
    PiUndoGuardStorage _storage;
};

/// Suspends logging: commands inside are executed but not collected.
class KO_PLUGINAPI_API PiUndoGuardNoLog {
public:
    /// @param quiet true: the stack's listeners are not called when this closes as the outermost guard.
    [[nodiscard]] explicit PiUndoGuardNoLog(bool quiet);

private:
    PiUndoGuardStorage _storage;
};

/// Suspends redo: commands that are collected inside are undone, but not executed again on redo. Only inside another guard.
class KO_PLUGINAPI_API PiUndoGuardNoRedo {
public:
    [[nodiscard]] PiUndoGuardNoRedo();

private:
    PiUndoGuardStorage _storage;
};

/// Receives the begin and the end of a scope of commands, whenever these commands are executed, undone or redone. Example: a
/// view that repaints once, at the end.
class KO_PLUGINAPI_API PiUndoScopeTarget : public RCBase {
public:
    ~PiUndoScopeTarget() override;
    /// Called at both ends of the scope.
    /// @param end false at the begin, which comes first in every direction.
    virtual void scopeReached(bool end) = 0;

protected:
    PiUndoScopeTarget();
};

/// Collects a mark before and after the commands that are collected while it is open; the marks call the target. Only inside
/// a guard. The destructor may throw what the target throws, but not while another exception passes through its scope.
class KO_PLUGINAPI_API PiUndoScope {
public:
    /// Begins the scope, and calls the target. @throws what the target throws.
    [[nodiscard]] explicit PiUndoScope(RCShdPtr<PiUndoScopeTarget> const& target);
    ~PiUndoScope() noexcept(false);
    PiUndoScope(PiUndoScope const&) = delete;
    PiUndoScope& operator=(PiUndoScope const&) = delete;

private:
    RCShdPtr<RCBase> _endMark;
    int _exceptionsAtEntry;
};

} // namespace Ko
