#pragma once

#include <mutex>

namespace Ko {

/// A mutual-exclusion lock with a name for diagnosis. Held with `std::lock_guard` or `std::unique_lock`.
class LkLock {
public:
    /// @param name is not copied and must live as long as the lock.
    explicit LkLock(char const* name) noexcept : _name(name) {}

    void lock() { _mutex.lock(); }
    bool try_lock() { return _mutex.try_lock(); }
    void unlock() { _mutex.unlock(); }
    char const* getName() const noexcept { return _name; }

private:
    friend class LkCondVar;

    std::mutex _mutex;
    char const* _name;
};

} // namespace Ko
