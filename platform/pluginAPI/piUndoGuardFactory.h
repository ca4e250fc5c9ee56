#pragma once

#include "base/oPtr.h"
#include "pluginAPI/piUndoGuard.h"

namespace Ko {

/// Makes the guard objects behind the facades `PiUndoGuard`, `PiUndoGuardNoLog` and the others. Application thread only.
class KO_PLUGINAPI_API PiUndoGuardFactory {
public:
    virtual ~PiUndoGuardFactory();
    /// Build the guard of a facade in the room that it has, with what the facade's constructor was given:
    virtual void createUndoGuard(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param) const = 0;
    virtual void createUndoGuardWithCb(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param,
        RCShdPtr<CbHandler<CbEmptyType>> const& callback) const = 0;
    virtual void createUndoGuardNoLog(PiUndoGuardStorage& storage, bool quiet) const = 0;
    virtual void createUndoGuardNoRedo(PiUndoGuardStorage& storage) const = 0;
    /// Executes and collects a command that marks the begin of a scope.
    /// @returns the mark of its end, for `endScope`.
    virtual RCShdPtr<RCBase> beginScope(RCShdPtr<PiUndoScopeTarget> const& target) const = 0;
    /// Collects the mark, for which there is room whatever happened in between, and executes it.
    virtual void endScope(RCShdPtr<RCBase> const& endMark) const = 0;

    /// Makes `factory` the one that the facades use; a null pointer takes the present one away.
    static void registerFactory(OPtr<PiUndoGuardFactory> factory);
    /// @throws ExAssertionFailed when none is registered.
    static PiUndoGuardFactory const& getInstance();
};

} // namespace Ko
