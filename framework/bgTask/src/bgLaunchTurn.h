#pragma once

#include "resmgt/lkCondVar.h"

#include <chrono>

namespace Ko {

/// The turn to launch a program: a lock that one job holds at a time, at most up to a deadline, and that a stopped job
/// stops waiting for.
class BgLaunchTurn {
public:
    using Clock = std::chrono::steady_clock;

    explicit BgLaunchTurn(char const* name) noexcept : _lock(name), _condition(name) {}

    /// Makes all waiting jobs check again whether they may go on.
    void wakeAll() {
        std::lock_guard const guard(_lock);
        _condition.broadcast();
    }

    class Holder;

private:
    // A deadline that has passed frees the turn without its holder, which a slow hook may keep busy.
    bool isFree() const { return !_holder || Clock::now() >= _deadline; }

    LkLock _lock;
    LkCondVar _condition;
    Holder const* _holder = nullptr;
    Clock::time_point _deadline = Clock::time_point::max();
};

/// Holds the turn until it is released, its deadline passes, or the scope ends.
class [[nodiscard]] BgLaunchTurn::Holder {
public:
    /// Waits for the turn while `mayGoOn()`, which is called under the lock. Calls `onWait()` before, without it.
    template <class MayGoOn, class OnWait = void (*)()>
    Holder(
        BgLaunchTurn& turn, MayGoOn mayGoOn, OnWait onWait = [] {})
        : _turn(turn) {
        std::unique_lock lock(turn._lock);
        if (!turn.isFree()) {
            lock.unlock();
            onWait();
            lock.lock();
        }
        while (!turn.isFree() && mayGoOn()) {
            // The holder can move its deadline during the wait.
            auto const deadline = turn._deadline;
            turn._condition.waitUntil(
                lock, deadline, [&] { return turn.isFree() || turn._deadline != deadline || !mayGoOn(); });
        }
        if (turn.isFree()) take();
    }
    ~Holder() { release(); }
    Holder(Holder const&) = delete;
    Holder& operator=(Holder const&) = delete;

    /// Whether the wait ended with the turn rather than with a stop.
    bool wasTaken() const noexcept { return _wasTaken; }
    /// Frees the turn at this time, unless it was released before.
    void releaseAt(Clock::time_point deadline) {
        std::lock_guard const guard(_turn._lock);
        if (_turn._holder != this) return;
        _turn._deadline = deadline;
        _turn._condition.broadcast();
    }
    void release() {
        std::lock_guard const guard(_turn._lock);
        if (_turn._holder != this) return;
        _turn._holder = nullptr;
        _turn._condition.broadcast();
    }

private:
    void take() noexcept {
        _turn._holder = this;
        _turn._deadline = Clock::time_point::max();
        _wasTaken = true;
    }

    BgLaunchTurn& _turn;
    bool _wasTaken = false;
};

} // namespace Ko
