#pragma once

#include "resmgt/lkCondVar.h"
#include "resmgt/lkDeadline.h"

#include <utility>

namespace Ko {

/// Lets one thread sleep, and other threads wake it early.
class Sleeper {
public:
    /// @param name is not copied and must live as long as the sleeper.
    explicit Sleeper(char const* name) noexcept : _lock(name), _condition(name) {}

    /// Sleeps so many seconds or until `wake()` is called; infinity and NaN mean until then. Returns at once if `wake()`
    /// was called since the last sleep. Only one thread at a time.
    /// @returns whether it was woken.
    bool sleep(double seconds) {
        std::unique_lock lock(_lock);
        _condition.waitUntil(lock, LkDeadline::after(seconds), [this] { return _isWoken; });
        return std::exchange(_isWoken, false);
    }
    /// Ends the present sleep, or the next one if no thread sleeps. Any thread.
    void wake() {
        std::lock_guard const guard(_lock);
        _isWoken = true;
        _condition.signal();
    }

private:
    LkLock _lock;
    LkCondVar _condition;
    bool _isWoken = false;
};

} // namespace Ko
