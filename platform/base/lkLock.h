#pragma once

#include "base/baseApi.h"

#include <mutex>

namespace Ko {

/// A mutual-exclusion lock with a name for diagnosis. Held with `std::lock_guard` or `std::unique_lock`.
class KO_BASE_API LkLock {
public:
    /// @param name is not copied and must live as long as the lock.
    explicit LkLock(char const* name) noexcept : _name(name) {}

    /// Waits until the lock is free, and takes it. Called by the standard guards.
    void lock() {
        if (!_mutex.try_lock()) lockPatiently();
    }
    /// Takes the lock if it is free. @returns whether it did.
    [[nodiscard]] bool try_lock() { return _mutex.try_lock(); }
    /// Releases the lock. Called by the standard guards.
    void unlock() { _mutex.unlock(); }
    /// The name given to the constructor.
    [[nodiscard]] char const* getName() const noexcept { return _name; }

private:
    friend class LkCondVar;

    void lockPatiently();

    std::mutex _mutex;
    char const* _name;
};

} // namespace Ko
