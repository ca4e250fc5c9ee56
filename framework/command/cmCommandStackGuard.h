#pragma once

#include "framework/command/cmCommandStack.h"

namespace Ko {

/// Makes another command stack the active one for the length of a scope.
///
/// Application thread only. Guards nest. The destructor activates the previous stack again. The manager's handlers are called
/// only when the active stack changes. The destructor may throw what they throw; while another exception passes through its
/// scope, it logs the error instead.
class KO_FRAMEWORK_API CmCommandStackGuard {
public:
    /// @throws InSingletonEx::ExNotInitialized outside the lifetime of the package "command", and what a listener throws; the
    /// previous stack is active again then.
    [[nodiscard]] explicit CmCommandStackGuard(RCShdPtr<CmCommandStack> const& stack);
    ~CmCommandStackGuard() noexcept(false);
    CmCommandStackGuard(CmCommandStackGuard const&) = delete;
    CmCommandStackGuard& operator=(CmCommandStackGuard const&) = delete;

private:
    RCShdPtr<CmCommandStack> _previous;
    int _exceptionsAtEntry;
};

} // namespace Ko
