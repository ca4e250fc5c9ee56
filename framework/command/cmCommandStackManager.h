#pragma once

#include "base/inSingleton.h"
#include "framework/command/cmCommandStack.h"

namespace Ko {

class CmCommandStackManager;
extern template class KO_FRAMEWORK_API InSingleton<CmCommandStackManager>;

/// Holds the active command stack, that of the active document: the one that code which creates commands logs into.
///
/// It exists while the package "command" is initialised. Application thread only.
class KO_FRAMEWORK_API CmCommandStackManager : public InSingleton<CmCommandStackManager> {
public:
    CmCommandStackManager(CmCommandStackManager const&) = delete;
    CmCommandStackManager& operator=(CmCommandStackManager const&) = delete;

    /// The active stack; null when there is none.
    RCShdPtr<CmCommandStack> get() const { return _active; }
    /// Calls the handlers if the active stack changes. What a handler throws passes on, with the stack set.
    void set(RCShdPtr<CmCommandStack> const& stack);

    /// Called after the active stack has changed. Handlers are not owned:
    void addCallback(CbHandler<CbEmptyType>* handler) { _changeCallbacks.add(handler); }
    void removeCallback(CbHandler<CbEmptyType>* handler) { _changeCallbacks.remove(handler); }

private:
    friend class InSingleton<CmCommandStackManager>;

    CmCommandStackManager() = default;
    ~CmCommandStackManager() = default;

    RCShdPtr<CmCommandStack> _active;
    CbDispatcher<CbEmptyType> _changeCallbacks;
};

} // namespace Ko
