#pragma once

#include "base/inSingleton.h"
#include "framework/command/cmCommandStack.h"

#include <functional>
#include <utility>

namespace Ko {

class CmCommandStackManager;
extern template class KO_FRAMEWORK_API InSingleton<CmCommandStackManager>;

/// Holds the active command stack, that of the active document. Code that creates commands asks it for the stack to log
/// into.
///
/// Exists while the package "command" is initialised. Application thread only.
class KO_FRAMEWORK_API CmCommandStackManager : public InSingleton<CmCommandStackManager> {
public:
    CmCommandStackManager(CmCommandStackManager const&) = delete;
    CmCommandStackManager& operator=(CmCommandStackManager const&) = delete;

    /// The active stack; null when there is none.
    [[nodiscard]] RCShdPtr<CmCommandStack> get() const { return _active; }
    /// Makes another stack the active one, and calls the handlers if it is not active already. Exceptions of handlers pass
    /// on, with the stack set.
    /// @param stack null for none.
    void set(RCShdPtr<CmCommandStack> const& stack);

    /// Registers a handler that is called after the active stack has changed. The handler is not owned.
    void addCallback(CbHandler<CbEmptyType>* handler) { _changeCallbacks.add(handler); }
    /// Ends the registration of a handler.
    void removeCallback(CbHandler<CbEmptyType>* handler) { _changeCallbacks.remove(handler); }
    /// Calls `callable` after the active stack has changed.
    [[nodiscard]] CbSubscription onChange(std::function<void()> callable) {
        return _changeCallbacks.subscribe(std::move(callable));
    }

private:
    friend class InSingleton<CmCommandStackManager>;

    CmCommandStackManager() = default;
    ~CmCommandStackManager() = default;

    RCShdPtr<CmCommandStack> _active;
    CbDispatcher<CbEmptyType> _changeCallbacks;
};

} // namespace Ko
