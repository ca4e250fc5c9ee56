#pragma once

#include "base/oPtr.h"
#include "framework/actions/actAction.h"

namespace Ko {

/// While it exists, an action is being performed, and not destroyed. Application thread only; nests.
class ActPerforming {
public:
    explicit ActPerforming(ActAction const& action) noexcept : _action(action), _outer(_innermost) {
        _innermost = this;
    }
    /// Destroys what it keeps.
    ~ActPerforming() { _innermost = _outer; }
    ActPerforming(ActPerforming const&) = delete;
    ActPerforming& operator=(ActPerforming const&) = delete;

    /// Keeps an action that is to be destroyed until it has been performed.
    /// @returns false if it is not being performed.
    static bool keep(ActAction* action) noexcept;

private:
    static ActPerforming* _innermost;

    ActAction const& _action;
    ActPerforming* _outer;
    OPtr<ActAction> _kept;
};

} // namespace Ko
