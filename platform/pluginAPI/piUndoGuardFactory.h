#pragma once

#include "base/oPtr.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Constructs the guard objects of the facades `PiUndoGuard`, `PiUndoGuardNoLog` and the others. Application thread only.
class KO_PLUGINAPI_API PiUndoGuardFactory {
public:
    virtual ~PiUndoGuardFactory();
    /// Constructs the guard of a `PiUndoGuard` in its storage.
    virtual void createUndoGuard(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param) const = 0;
    /// Constructs the guard of a `PiUndoGuard` with a callback in its storage.
    virtual void createUndoGuardWithCb(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param,
        RCShdPtr<CbHandler<CbEmptyType>> const& callback) const = 0;
    /// Constructs the guard of a `PiUndoGuardNoLog` in its storage.
    virtual void createUndoGuardNoLog(PiUndoGuardStorage& storage, bool quiet) const = 0;
    /// Constructs the guard of a `PiUndoGuardNoRedo` in its storage.
    virtual void createUndoGuardNoRedo(PiUndoGuardStorage& storage) const = 0;
    /// Executes and collects a command that marks the begin of a scope.
    /// @returns the mark of its end, for `endScope`.
    [[nodiscard]] virtual RCShdPtr<RCBase> beginScope(RCShdPtr<PiUndoScopeTarget> const& target) const = 0;
    /// Collects the end mark and executes it. Collecting cannot fail: `beginScope` has reserved the memory.
    virtual void endScope(RCShdPtr<RCBase> const& endMark) const = 0;

    /// Sets the factory that the facades use; null for none.
    static void registerFactory(OPtr<PiUndoGuardFactory> factory);
    /// The factory that the facades use.
    /// @throws ExAssertionFailed when none is registered.
    [[nodiscard]] static PiUndoGuardFactory const& getInstance();
};

} // namespace Ko
