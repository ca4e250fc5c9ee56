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

/// Common base of reference-counted pointers to `T`: gives access to the object.
template <class T>
class RCBasePtr {
public:
    /// The object; may be null.
    [[nodiscard]] T* get() const noexcept { return _object; }
    /// Whether the pointer is null.
    [[nodiscard]] bool isNull() const noexcept { return _object == nullptr; }
    /// Whether the pointer is not null.
    explicit operator bool() const noexcept { return _object != nullptr; }

    /// The object. @throws ExNullPtr if the pointer is null.
    T* operator->() const { return &**this; }
    /// The object. @throws ExNullPtr if the pointer is null.
    T& operator*() const {
        if (!_object) [[unlikely]]
            RCExUtil::throwExNullPtr(typeid(T).name());
        return *_object;
    }

    /// Writes the object for diagnosis, by the `dumpObject(std::ostream&, T const&)` of its class; "null" for a null pointer.
    template <class Stream>
    void dump(Stream& stream) const {
        if (_object)
            dumpObject(stream, *_object);
        else
            stream << "null";
    }

protected:
    /// Does not count: the derived class does.
    explicit RCBasePtr(T* object) noexcept : _object(object) {}
    ~RCBasePtr() = default;

    /// Null for a null pointer.
    T* _object;
};

/// Shares the ownership of a reference-counted object.
///
/// Thread-safe like a plain pointer: different pointers to one object may be used by different threads at once, one pointer
/// by one thread at a time.
template <class T>
class RCShdPtr : public RCBasePtr<T> {
public:
    /// Makes an object and returns its first owner. A class with a protected constructor befriends `RCShdPtr<Class>`.
    template <class... Args>
    [[nodiscard]] static RCShdPtr create(Args&&... args) {
        T* const object = new T(std::forward<Args>(args)...);
        object->addFirstReference();
        return RCShdPtr(object, Adopt());
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

    /// Releases the object and becomes null.
    void reset() noexcept { RCShdPtr().swap(*this); }
    /// Swaps the objects of both pointers.
    void swap(RCShdPtr& other) noexcept { std::swap(this->_object, other._object); }

    /// A pointer to the same object if that is a `U`; null otherwise.
    template <class U>
    [[nodiscard]] RCShdPtr<U> dynamicCast() const {
        return RCShdPtr<U>(dynamic_cast<U*>(this->_object));
    }

private:
    template <class U>
    friend class RCShdPtr;
    template <class U>
    friend class RCWeakPtr;

    struct Adopt {};
    // Takes over a reference that is counted already.
    RCShdPtr(T* object, Adopt) noexcept : RCBasePtr<T>(object) {}

    void retain() const noexcept {
        if (this->_object) this->_object->addReference();
    }
    T* detach() noexcept { return std::exchange(this->_object, nullptr); }
};

/// Whether both point to the same object or are null.
template <class T, class U>
bool operator==(RCShdPtr<T> const& a, RCShdPtr<U> const& b) noexcept {
    return a.get() == b.get();
}
template <class T>
bool operator==(RCShdPtr<T> const& a, std::nullptr_t) noexcept {
    return a.isNull();
}

} // namespace Ko

/// Hashes the address of the object, consistent with `==`.
template <class T>
struct std::hash<Ko::RCShdPtr<T>> {
    /// The same value for all pointers to one object.
    std::size_t operator()(Ko::RCShdPtr<T> const& pointer) const noexcept { return std::hash<T*>()(pointer.get()); }
};
