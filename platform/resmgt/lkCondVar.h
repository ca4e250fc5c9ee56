#pragma once

#include "base/lkLock.h"

#include <condition_variable>
#include <mutex>

namespace Ko {

/// A condition variable with a name for diagnosis.
class LkCondVar {
public:
    /// @param name is not copied and must live as long as the condition.
    explicit LkCondVar(char const* name) noexcept : _name(name) {}

    /// Releases the lock, waits for a signal, and takes the lock again. May also end without a signal.
    void wait(std::unique_lock<LkLock>& lock) {
        std::unique_lock native(lock.mutex()->_mutex, std::adopt_lock);
        _condition.wait(native);
        native.release();
    }
    /// The same until `condition()` holds, which is called under the lock.
    template <class Condition>
    void wait(std::unique_lock<LkLock>& lock, Condition condition) {
        while (!condition())
            wait(lock);
    }
    /// The same, but no longer than to the deadline. @returns whether `condition()` holds.
    template <class Clock, class Duration, class Condition>
    bool waitUntil(
        std::unique_lock<LkLock>& lock, std::chrono::time_point<Clock, Duration> const& deadline, Condition condition) {
        std::unique_lock native(lock.mutex()->_mutex, std::adopt_lock);
        bool const holds = _condition.wait_until(native, deadline, condition);
        native.release();
        return holds;
    }

    /// Wakes one of the threads that wait.
    void signal() noexcept { _condition.notify_one(); }
    /// Wakes all of them.
    void broadcast() noexcept { _condition.notify_all(); }

    /// As it was given.
    char const* getName() const noexcept { return _name; }

private:
    std::condition_variable _condition;
    char const* _name;
};

} // namespace Ko
