#pragma once

#include "base/rcBase.h"

#include <concepts>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <typeinfo>
#include <utility>

namespace Ko {

/// What all reference-counted pointers to `T` share: access to the object.
template <class T>
class RCBasePtr {
public:
    /// The object, which may be null:
    T* get() const noexcept { return _object; }
    bool isNull() const noexcept { return _object == nullptr; }
    explicit operator bool() const noexcept { return _object != nullptr; }

    /// @throws ExNullPtr when the pointer is null.
    T* operator->() const { return &**this; }
    /// @throws ExNullPtr when the pointer is null.
    T& operator*() const {
        if (!_object) [[unlikely]]
            RCExUtil::throwExNullPtr(typeid(T).name());
        return *_object;
    }

    /// Writes the object for diagnosis, as the `dumpObject(std::ostream&, T const&)` found for its class does; "null"
    /// for a null pointer.
    template <class Stream>
    void dump(Stream& stream) const {
        if (_object)
            dumpObject(stream, *_object);
        else
            stream << "null";
    }

protected:
    /// The derived class counts.
    explicit RCBasePtr(T* object) noexcept : _object(object) {}
    ~RCBasePtr() = default;

    /// Null for a null pointer.
    T* _object;
};

/// Shares the ownership of a reference-counted object.
///
/// As safe across threads as a plain pointer: different pointers to one object may be used on different threads, one
/// pointer only by one at a time.
template <class T>
class RCShdPtr : public RCBasePtr<T> {
public:
    /// Makes an object that the result owns. A class whose constructor is protected befriends `RCShdPtr<Class>`.
    template <class... Args>
    static RCShdPtr create(Args&&... args) {
        return RCShdPtr(new T(std::forward<Args>(args)...));
    }

    /// A null pointer.
    RCShdPtr() noexcept : RCBasePtr<T>(nullptr) {}
    RCShdPtr(std::nullptr_t) noexcept : RCShdPtr() {}
    /// Becomes an owner of the object, which is on the heap.
    explicit RCShdPtr(T* object) noexcept : RCBasePtr<T>(object) { retain(); }
    RCShdPtr(RCShdPtr const& other) noexcept : RCShdPtr(other.get()) {}
    RCShdPtr(RCShdPtr&& other) noexcept : RCBasePtr<T>(other.detach()) {}
    template <class U>
    requires std::convertible_to<U*, T*> RCShdPtr(RCShdPtr<U> const& other)
    noexcept : RCShdPtr(other.get()) {}
    template <class U>
    requires std::convertible_to<U*, T*> RCShdPtr(RCShdPtr<U>&& other)
    noexcept : RCBasePtr<T>(other.detach()) {}
    ~RCShdPtr() {
        if (this->_object) this->_object->removeReference();
    }

    RCShdPtr& operator=(RCShdPtr const& other) noexcept {
        RCShdPtr(other).swap(*this);
        return *this;
    }
    RCShdPtr& operator=(RCShdPtr&& other) noexcept {
        RCShdPtr(std::move(other)).swap(*this);
        return *this;
    }

    /// Gives up the object.
    void reset() noexcept { RCShdPtr().swap(*this); }
    /// Without counting.
    void swap(RCShdPtr& other) noexcept { std::swap(this->_object, other._object); }

    /// A pointer to the same object if it is a `U`, a null pointer otherwise.
    template <class U>
    RCShdPtr<U> dynamicCast() const {
        return RCShdPtr<U>(dynamic_cast<U*>(this->_object));
    }

private:
    template <class U>
    friend class RCShdPtr;
    template <class U>
    friend class RCWeakPtr;

    struct Adopt {};
    // Takes over a reference that was already added.
    RCShdPtr(T* object, Adopt) noexcept : RCBasePtr<T>(object) {}

    void retain() const noexcept {
        if (this->_object) this->_object->addReference();
    }
    T* detach() noexcept { return std::exchange(this->_object, nullptr); }
};

/// Whether both point to the same object, or to none.
template <class T, class U>
bool operator==(RCShdPtr<T> const& a, RCShdPtr<U> const& b) noexcept {
    return a.get() == b.get();
}
template <class T>
bool operator==(RCShdPtr<T> const& a, std::nullptr_t) noexcept {
    return a.isNull();
}

} // namespace Ko

/// By the object's identity, as `==` compares.
template <class T>
struct std::hash<Ko::RCShdPtr<T>> {
    /// The same for pointers to one object.
    std::size_t operator()(Ko::RCShdPtr<T> const& pointer) const noexcept { return std::hash<T*>()(pointer.get()); }
};
