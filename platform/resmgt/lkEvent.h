#pragma once

#include "resmgt/lkCondVar.h"

#include <chrono>

namespace Ko {

/// Something that has happened, for threads that wait for it: once set, it stays set until it is reset. Any thread.
///
/// May be destroyed as soon as the last wait has returned, also while the `set()` that ended it is still returning.
class LkEvent {
public:
    /// @param name is not copied and must live as long as the event.
    LkEvent(char const* name, bool isSet) noexcept : _lock(name), _condition(name), _isSet(isSet) {}

    void set() {
        std::lock_guard const guard(_lock);
        _isSet = true;
        // Under the lock: a thread that wakes up may destroy the event.
        _condition.broadcast();
    }
    void reset() {
        std::lock_guard const guard(_lock);
        _isSet = false;
    }
    bool isSet() const {
        std::lock_guard const guard(_lock);
        return _isSet;
    }

    void wait() const {
        std::unique_lock lock(_lock);
        _condition.wait(lock, [this] { return _isSet; });
    }
    /// Waits no longer than to the deadline. @returns whether the event was set.
    bool waitUntil(std::chrono::steady_clock::time_point deadline) const {
        std::unique_lock lock(_lock);
        return _condition.waitUntil(lock, deadline, [this] { return _isSet; });
    }
    /// Waits no longer than so many seconds. @returns whether the event was set.
    bool wait(double seconds) const {
        using namespace std::chrono;
        return waitUntil(steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(seconds)));
    }

    char const* getName() const noexcept { return _lock.getName(); }

private:
    mutable LkLock _lock;
    mutable LkCondVar _condition;
    bool _isSet;
};

} // namespace Ko
