#pragma once

#include <mutex>

namespace Ko {

/// A recursive mutual-exclusion lock with a name for diagnosis: the thread that holds it may take it again, and releases it
/// as often.
class LkRecLock {
public:
    /// @param name is not copied and must live as long as the lock.
    explicit LkRecLock(char const* name) noexcept : _name(name) {}

    /// Waits until no other thread holds the lock, and takes it. Called by the standard guards.
    void lock() { _mutex.lock(); }
    /// Takes the lock if no other thread holds it. @returns whether it did.
    [[nodiscard]] bool try_lock() { return _mutex.try_lock(); }
    /// Releases the lock once. Called by the standard guards.
    void unlock() { _mutex.unlock(); }
    /// The name given to the constructor.
    [[nodiscard]] char const* getName() const noexcept { return _name; }

private:
    std::recursive_mutex _mutex;
    char const* _name;
};

} // namespace Ko
