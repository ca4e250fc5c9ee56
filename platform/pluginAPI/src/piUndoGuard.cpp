#include "pluginAPI/piUndoGuard.h"

#include "base/assertions.h"
#include "pluginAPI/piUndoGuardFactory.h"
#include "resmgt/lgFirstError.h"

#include <exception>

namespace Ko {

namespace {

constexpr AssertionSource source{"pluginAPI\\src\\piUndoGuard"};

OPtr<PiUndoGuardFactory> registered;

} // namespace

PiUndoGuardFactory::~PiUndoGuardFactory() = default;

void PiUndoGuardFactory::registerFactory(OPtr<PiUndoGuardFactory> factory) {
    registered = std::move(factory);
}

PiUndoGuardFactory const& PiUndoGuardFactory::getInstance() {
    source.require(registered != nullptr, "registered != nullptr");
    return *registered;
}

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
    : _endMark(PiUndoGuardFactory::getInstance().beginScope(target)), _exceptionsAtEntry(std::uncaught_exceptions()) {}

PiUndoScope::~PiUndoScope() noexcept(false) {
    LgFirstError error("The end of a scope of commands");
    error.capture([this] { PiUndoGuardFactory::getInstance().endScope(_endMark); });
    error.finish(_exceptionsAtEntry);
}

} // namespace Ko
