#pragma once

#include "base/baseApi.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace Ko {

class RCWeakState;

/// Base of every object that is owned through `RCShdPtr`: it carries its own reference count.
///
/// The count may be changed from any thread. A new object has no owner; the first `RCShdPtr` becomes its owner and the
/// last one deletes it. Objects are made with `RCShdPtr<T>::create(...)`. Copying an object does not copy its owners.
class KO_BASE_API RCBase {
public:
    /// For pointers: there is one owner more, or one less, and the last one deletes the object:
    void addReference() const noexcept { _references.fetch_add(1, std::memory_order_relaxed); }
    void removeReference() const noexcept {
        // Release: what this owner wrote is seen by the one that deletes; acquire: by this one if it is the last.
        std::uint32_t const before = _references.fetch_sub(1, std::memory_order_acq_rel);
        if ((before & countMask) == 1) destroy(before);
    }
    /// The number of owners; for diagnosis, where other threads have some.
    std::uint32_t getReferenceCount() const noexcept { return _references.load(std::memory_order_relaxed) & countMask; }

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

    // The number of owners; the flag tells that weak references exist, which are kept aside.
    mutable std::atomic<std::uint32_t> _references{0};
};

/// What reference-counting pointers raise.
class KO_BASE_API RCExUtil {
public:
    /// @param type mangled name of the type that the null pointer was to point to, as of `typeid(T).name()`.
    /// @throws ExNullPtr
    [[noreturn]] static void throwExNullPtr(char const* type);
};

} // namespace Ko
