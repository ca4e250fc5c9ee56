#pragma once

#include "base/baseApi.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace Ko {

class RCWeakState;

/// Base of every object that is owned through `RCShdPtr`: it carries its own reference count.
///
/// The count may be changed on any thread. A new object has no owner; the last `RCShdPtr` to it deletes it. Objects are made
/// with `RCShdPtr<T>::create(...)`. A copy of an object starts without owners.
class KO_BASE_API RCBase {
public:
    /// Adds an owner. Called by pointers.
    void addReference() const noexcept { _references.fetch_add(1, std::memory_order_relaxed); }
    /// Adds the first owner of an object that no other thread has a pointer to. Called by pointers.
    void addFirstReference() const noexcept {
        // The constructor may have made owners, which still exist.
        if (_references.load(std::memory_order_relaxed) != 0) return addReference();
        _references.store(1, std::memory_order_relaxed);
    }
    /// Removes an owner; the last one deletes the object. Called by pointers.
    void removeReference() const noexcept {
        // The only owner of an object without weak references is alone with the count.
        if (_references.load(std::memory_order_acquire) == 1) return destroy(1);
        // Release: the deleting thread sees the writes of this owner. Acquire: needed if this is the deleting thread.
        std::uint32_t const before = _references.fetch_sub(1, std::memory_order_acq_rel);
        if ((before & countMask) == 1) destroy(before);
    }
    /// The number of owners. Only for diagnosis if other threads own the object too.
    [[nodiscard]] std::uint32_t getReferenceCount() const noexcept {
        return _references.load(std::memory_order_relaxed) & countMask;
    }

protected:
    RCBase() noexcept = default;
    RCBase(RCBase const&) noexcept {}
    RCBase& operator=(RCBase const&) noexcept { return *this; }
    virtual ~RCBase();

private:
    friend class RCWeakState;

    static constexpr std::uint32_t weakFlag = 0x80000000u;
    static constexpr std::uint32_t countMask = ~weakFlag;

    void destroy(std::uint32_t before) const noexcept;

    // The number of owners. The flag means that a table outside the object holds its weak references.
    mutable std::atomic<std::uint32_t> _references{0};
};

/// Raises the exceptions of reference-counted pointers.
class KO_BASE_API RCExUtil {
public:
    /// @param type mangled name of the type of the missing object, from `typeid(T).name()`.
    /// @throws ExNullPtr
    [[noreturn]] static void throwExNullPtr(char const* type);
};

} // namespace Ko
