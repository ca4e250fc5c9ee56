#pragma once

#include "base/rcShdPtr.h"

#include <memory>
#include <mutex>

namespace Ko {

/// The common state of all weak references to one object. Exists only for objects that have had one.
class KO_BASE_API RCWeakState {
public:
    /// The state of the weak references to `object`, which stays alive during the call. Null for a null object.
    [[nodiscard]] static std::shared_ptr<RCWeakState> of(RCBase const* object);

    /// Adds an owner to the object, unless the object has no owner any more.
    /// @returns whether it added one.
    [[nodiscard]] bool retain() noexcept;

private:
    friend class RCBase;

    static void expire(RCBase const* object) noexcept;

    // Held while an owner is added and while the object expires, so that the object cannot be deleted in between.
    std::mutex _mutex;
    RCBase const* _object = nullptr;
};

/// Refers to an object without keeping it alive. Costs nothing for objects without weak references.
template <class T>
class RCWeakPtr {
public:
    /// Refers to no object.
    RCWeakPtr() noexcept = default;
    /// Refers to the object of the pointer, if any.
    RCWeakPtr(RCShdPtr<T> const& object) : _state(RCWeakState::of(object.get())), _object(object.get()) {}
    template <class U>
    requires std::convertible_to<U*, T*> RCWeakPtr(RCShdPtr<U> const& object) : RCWeakPtr(RCShdPtr<T>(object)) {}
    /// @param object null, or owned by an `RCShdPtr`.
    explicit RCWeakPtr(T* object) : RCWeakPtr(RCShdPtr<T>(object)) {}

    /// A new owner of the object; null if the object has no owner any more.
    [[nodiscard]] RCShdPtr<T> lock() const noexcept {
        if (!_state || !_state->retain()) return nullptr;
        return RCShdPtr<T>(_object, typename RCShdPtr<T>::Adopt());
    }

private:
    std::shared_ptr<RCWeakState> _state;
    T* _object = nullptr;
};

} // namespace Ko
