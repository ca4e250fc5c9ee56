#include "pluginAPI/piUndoGuardFactory.h"

#include "base/assertions.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"pluginAPI\\src\\piUndoGuardFactory"};

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

} // namespace Ko
