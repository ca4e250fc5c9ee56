#include "framework/command/cmCommandStackGuard.h"

#include "framework/command/cmCommandStackManager.h"
#include "resmgt/lgFirstError.h"

#include <exception>

namespace Ko {

CmCommandStackGuard::CmCommandStackGuard(RCShdPtr<CmCommandStack> const& stack)
    : _previous(CmCommandStackManager::getInstance().get()), _exceptionsAtEntry(std::uncaught_exceptions()) {
    CmCommandStackManager& manager = CmCommandStackManager::getInstance();
    try {
        manager.set(stack);
    } catch (...) {
        LgFirstError error("The return to the previous command stack");
        error.capture([&] { manager.set(_previous); });
        error.log();
        throw;
    }
}

CmCommandStackGuard::~CmCommandStackGuard() noexcept(false) {
    LgFirstError error("The return to the previous command stack");
    error.capture([this] { CmCommandStackManager::getInstance().set(_previous); });
    error.finish(_exceptionsAtEntry);
}

} // namespace Ko
