#pragma once

#include "base/rcShdPtr.h"

#include <memory>
#include <mutex>

namespace Ko {

/// What the weak references to one object share. It exists only for objects that ever had one.
class KO_BASE_API RCWeakState {
public:
    /// The state of `object`, which the caller owns a reference to; null for a null object.
    static std::shared_ptr<RCWeakState> of(RCBase const* object);

    /// Adds a reference to the object unless it is gone.
    /// @returns whether it did.
    bool retain() noexcept;

private:
    friend class RCBase;

    static void expire(RCBase const* object) noexcept;

    // Held while the object is retained or expires, so that it cannot be deleted in between.
    std::mutex _mutex;
    RCBase const* _object = nullptr;
};

/// Refers to an object without keeping it alive. Objects that never get a weak reference pay nothing for it.
template <class T>
class RCWeakPtr {
public:
    RCWeakPtr() noexcept = default;
    /// Refers to the object that the pointer owns, if any.
    RCWeakPtr(RCShdPtr<T> const& object) : _state(RCWeakState::of(object.get())), _object(object.get()) {}
    template <class U>
    requires std::convertible_to<U*, T*> RCWeakPtr(RCShdPtr<U> const& object) : RCWeakPtr(RCShdPtr<T>(object)) {}
    /// @param object must be owned by an `RCShdPtr` somewhere.
    explicit RCWeakPtr(T* object) : RCWeakPtr(RCShdPtr<T>(object)) {}

    /// An owner of the object, or null when the object is gone.
    RCShdPtr<T> lock() const noexcept {
        if (!_state || !_state->retain()) return nullptr;
        return RCShdPtr<T>(_object, typename RCShdPtr<T>::Adopt());
    }

private:
    std::shared_ptr<RCWeakState> _state;
    T* _object = nullptr;
};

} // namespace Ko
