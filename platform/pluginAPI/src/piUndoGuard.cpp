#include "pluginAPI/piUndoGuard.h"

#include "pluginAPI/piUndoGuardFactory.h"
#include "resmgt/lgFirstError.h"

namespace Ko {

PiUndoGuardProtocol::~PiUndoGuardProtocol() noexcept(false) = default;

PiUndoGuard::PiUndoGuard(RCShdPtr<PiCommandStack> const& stack, LiString const& description, PiExecParam const& param) {
    PiUndoGuardFactory::getInstance().createUndoGuard(_storage, stack, description, param);
}

PiUndoGuard::PiUndoGuard(RCShdPtr<PiCommandStack> const& stack, LiString const& description, PiExecParam const& param,
    RCShdPtr<CbHandler<CbEmptyType>> const& callback) {
    PiUndoGuardFactory::getInstance().createUndoGuardWithCb(_storage, stack, description, param, callback);
}

PiUndoGuardNoLog::PiUndoGuardNoLog(bool quiet) {
    PiUndoGuardFactory::getInstance().createUndoGuardNoLog(_storage, quiet);
}

PiUndoGuardNoRedo::PiUndoGuardNoRedo() {
    PiUndoGuardFactory::getInstance().createUndoGuardNoRedo(_storage);
}

PiUndoScopeTarget::PiUndoScopeTarget() = default;
PiUndoScopeTarget::~PiUndoScopeTarget() = default;

PiUndoScope::PiUndoScope(RCShdPtr<PiUndoScopeTarget> const& target)
    : _target(target), _exceptionsAtEntry(std::uncaught_exceptions()) {
    PiUndoGuardFactory::getInstance().markScope(_target, false);
}

PiUndoScope::~PiUndoScope() noexcept(false) {
    LgFirstError error("The end of a scope of commands");
    error.capture([this] { PiUndoGuardFactory::getInstance().markScope(_target, true); });
    error.finish(std::uncaught_exceptions() > _exceptionsAtEntry);
}

} // namespace Ko
