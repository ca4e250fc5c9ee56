#pragma once

#include "resmgt/lkCondVar.h"

#include <chrono>
#include <utility>

namespace Ko {

/// Naps of one thread that other threads can end early.
class Sleeper {
public:
    /// @param name is not copied and must live as long as the sleeper.
    explicit Sleeper(char const* name) noexcept : _lock(name), _condition(name) {}

    /// Naps so many seconds, or until somebody calls `wake()`; a wake that came before ends the nap at once. At most one
    /// thread at a time.
    /// @returns whether the nap was ended by a wake.
    bool sleep(double seconds) {
        using namespace std::chrono;
        auto const deadline = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(seconds));
        std::unique_lock lock(_lock);
        _condition.waitUntil(lock, deadline, [this] { return _isWoken; });
        return std::exchange(_isWoken, false);
    }
    /// Ends the nap, or the next one if there is none. Any thread.
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
