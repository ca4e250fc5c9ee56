#pragma once

#include <mutex>

namespace Ko {

/// A lock with a name that the thread holding it may take again; it is free when it was given back as often.
class LkRecLock {
public:
    /// @param name is not copied and must live as long as the lock.
    explicit LkRecLock(char const* name) noexcept : _name(name) {}

    /// What the standard guards call:
    void lock() { _mutex.lock(); }
    bool try_lock() { return _mutex.try_lock(); }
    void unlock() { _mutex.unlock(); }
    /// As it was given.
    char const* getName() const noexcept { return _name; }

private:
    std::recursive_mutex _mutex;
    char const* _name;
};

} // namespace Ko
