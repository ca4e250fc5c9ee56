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

/// Base of all guard objects. A guard's destructor may throw: it closes the guard, which logs commands and calls
/// listeners. While another exception is passing it logs instead, so that the first error is the one that is seen.
class KO_PLUGINAPI_API PiUndoGuardProtocol {
public:
    virtual ~PiUndoGuardProtocol() noexcept(false);
    PiUndoGuardProtocol(PiUndoGuardProtocol const&) = delete;
    PiUndoGuardProtocol& operator=(PiUndoGuardProtocol const&) = delete;

protected:
    PiUndoGuardProtocol() noexcept = default;
};

/// Room for the guard object that a facade owns; the factory builds it there.
class KO_PLUGINAPI_API PiUndoGuardStorage {
public:
    PiUndoGuardStorage() noexcept = default;
    /// Destroys the guard object, and throws what that throws.
    ~PiUndoGuardStorage() noexcept(false) {
        if (_guard) _guard->~PiUndoGuardProtocol();
    }
    PiUndoGuardStorage(PiUndoGuardStorage const&) = delete;
    PiUndoGuardStorage& operator=(PiUndoGuardStorage const&) = delete;

    /// Builds a guard object of type `Guard`, once.
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

/// Groups what is executed while it is open into one undoable step, for code that knows only this interface.
/// Application thread only; guards close in the reverse order of opening.
class KO_PLUGINAPI_API PiUndoGuard {
public:
    /// @param stack logs the step; it must come from the framework.
    /// @throws ExAssertionFailed before the package "command" is initialised, and what entering a guard throws.
    PiUndoGuard(RCShdPtr<PiCommandStack> const& stack, LiString const& description, PiExecParam const& param = {});
    /// As above; `callback` is called once, when the outermost guard closes, also if this one is nested.
    PiUndoGuard(RCShdPtr<PiCommandStack> const& stack, LiString const& description, PiExecParam const& param,
        RCShdPtr<CbHandler<CbEmptyType>> const& callback);

private:
    PiUndoGuardStorage _storage;
};

/// While it is open, commands are executed but not collected.
class KO_PLUGINAPI_API PiUndoGuardNoLog {
public:
    /// @param quiet whether the stack's listeners are not told when this closes as the outermost guard.
    explicit PiUndoGuardNoLog(bool quiet);

private:
    PiUndoGuardStorage _storage;
};

/// Commands that are collected while it is open are undone but not executed again on redo. Only inside another guard.
class KO_PLUGINAPI_API PiUndoGuardNoRedo {
public:
    PiUndoGuardNoRedo();

private:
    PiUndoGuardStorage _storage;
};

/// Is told where a scope of commands begins and ends, whenever the commands around which it was opened are executed,
/// undone or redone: a view, for example, that repaints once at the end.
class KO_PLUGINAPI_API PiUndoScopeTarget : public RCBase {
public:
    ~PiUndoScopeTarget() override;
    /// @param end false comes before true in every direction.
    virtual void scopeReached(bool end) = 0;

protected:
    PiUndoScopeTarget();
};

/// Puts marks for `target` before and after the commands that are collected while it is open. Only inside a guard. Its
/// destructor may throw what the target throws, but not while another exception is passing.
class KO_PLUGINAPI_API PiUndoScope {
public:
    /// Puts the mark where the scope begins, which tells the target. @throws what the target throws.
    explicit PiUndoScope(RCShdPtr<PiUndoScopeTarget> const& target);
    ~PiUndoScope() noexcept(false);
    PiUndoScope(PiUndoScope const&) = delete;
    PiUndoScope& operator=(PiUndoScope const&) = delete;

private:
    RCShdPtr<RCBase> _endMark;
    int _exceptionsAtEntry;
};

} // namespace Ko
