#pragma once

#include "base/lkLock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Ko {

/// A condition variable with a name for diagnosis.
class LkCondVar {
public:
    /// @param name is not copied and must live as long as the condition variable.
    explicit LkCondVar(char const* name) noexcept : _name(name) {}

    /// Releases the lock, waits for a signal, and takes the lock again. May also return without a signal.
    void wait(std::unique_lock<LkLock>& lock) {
        std::unique_lock native(lock.mutex()->_mutex, std::adopt_lock);
        _condition.wait(native);
        native.release();
    }
    /// Waits until `condition()` holds, which is called under the lock.
    template <class Condition>
    void wait(std::unique_lock<LkLock>& lock, Condition condition) {
        while (!condition())
            wait(lock);
    }
    /// Waits until `condition()` holds, which is called under the lock, or the deadline has passed.
    /// @returns whether `condition()` holds.
    template <class Clock, class Duration, class Condition>
    bool waitUntil(
        std::unique_lock<LkLock>& lock, std::chrono::time_point<Clock, Duration> const& deadline, Condition condition) {
        if (deadline == deadline.max()) {
            wait(lock, condition);
            return true;
        }
        std::unique_lock native(lock.mutex()->_mutex, std::adopt_lock);
        bool const holds = _condition.wait_until(native, deadline, condition);
        native.release();
        return holds;
    }

    /// Wakes one of the waiting threads.
    void signal() noexcept { _condition.notify_one(); }
    /// Wakes all waiting threads.
    void broadcast() noexcept { _condition.notify_all(); }

    /// The name given to the constructor.
    [[nodiscard]] char const* getName() const noexcept { return _name; }

private:
    std::condition_variable _condition;
    char const* _name;
};

} // namespace Ko
