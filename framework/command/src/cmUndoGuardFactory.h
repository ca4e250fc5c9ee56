#pragma once

#include "framework/command/cmUndoGuard.h"
#include "pluginAPI/piUndoGuardFactory.h"

namespace Ko {

/// A guard with a callback, which is called when the outermost guard closes.
class UndoGuardWithCb final : public CmUndoGuard {
public:
    UndoGuardWithCb(RCShdPtr<CmCommandStack> const& stack, LiString const& description, PiExecParam const& param,
        RCShdPtr<CbHandler<CbEmptyType>> const& callback);
};

/// Constructs the guards of this library inside the facades that plug-ins use.
class UndoGuardFactory final : public PiUndoGuardFactory {
public:
    void createUndoGuard(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param) const override;
    void createUndoGuardWithCb(PiUndoGuardStorage& storage, RCShdPtr<PiCommandStack> const& stack,
        LiString const& description, PiExecParam const& param,
        RCShdPtr<CbHandler<CbEmptyType>> const& callback) const override;
    void createUndoGuardNoLog(PiUndoGuardStorage& storage, bool quiet) const override;
    void createUndoGuardNoRedo(PiUndoGuardStorage& storage) const override;
    RCShdPtr<RCBase> beginScope(RCShdPtr<PiUndoScopeTarget> const& target) const override;
    void endScope(RCShdPtr<RCBase> const& endMark) const override;
};

} // namespace Ko
