#pragma once

#include "base/oPtr.h"
#include "framework/actions/actAction.h"

#include <utility>

namespace Ko {

/// Delays the destruction of an action while one of its operations runs. Application thread only; nests.
class ActPerforming {
public:
    explicit ActPerforming(ActAction const* action = nullptr) noexcept : _action(action), _outer(_innermost) {
        _innermost = this;
    }
    /// Destroys the action if its destruction was delayed.
    ~ActPerforming() { _innermost = _outer; }
    ActPerforming(ActPerforming const&) = delete;
    ActPerforming& operator=(ActPerforming const&) = delete;

    /// Ends the delay, and begins that of another action; null for none.
    void set(ActAction const* action) noexcept {
        _action = action;
        if (_kept) OPtr<ActAction>(std::move(_kept)).reset();
    }

    /// Delays the destruction until the outermost operation of the action has returned.
    /// @returns false if none runs.
    static bool keep(ActAction* action) noexcept;

private:
    static ActPerforming* _innermost;

    ActAction const* _action;
    ActPerforming* _outer;
    OPtr<ActAction> _kept;
};

} // namespace Ko
