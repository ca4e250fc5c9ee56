#pragma once

#include "framework/command/cmCommandStack.h"

namespace Ko {

/// Makes another command stack the active one for the length of a scope.
///
/// Application thread only. Nests. Restores the stack that was active when the guard was built, and tells the manager's
/// listeners only where the active stack really changes. The destructor may throw what they throw; while another
/// exception is passing it logs that instead.
class KO_FRAMEWORK_API CmCommandStackGuard {
public:
    /// @throws InSingletonEx::ExNotInitialized outside the lifetime of the package "command", and what a listener throws; the
    /// previous stack is active again then.
    explicit CmCommandStackGuard(RCShdPtr<CmCommandStack> const& stack);
    ~CmCommandStackGuard() noexcept(false);
    CmCommandStackGuard(CmCommandStackGuard const&) = delete;
    CmCommandStackGuard& operator=(CmCommandStackGuard const&) = delete;

private:
    RCShdPtr<CmCommandStack> _previous;
    int _exceptionsAtEntry;
};

} // namespace Ko
