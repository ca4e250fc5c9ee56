#pragma once

#include "resmgt/lkCondVar.h"

namespace Ko {

/// Whose turn it is to launch a program: a lock that one job holds for a long time, and that others stop waiting for when
/// they are stopped.
class BgLaunchTurn {
public:
    explicit BgLaunchTurn(char const* name) noexcept : _lock(name), _condition(name) {}

    /// Makes those that wait ask again whether they may go on.
    void wakeAll() {
        std::lock_guard const guard(_lock);
        _condition.broadcast();
    }

    class Holder;

private:
    LkLock _lock;
    LkCondVar _condition;
    bool _isHeld = false;
};

/// Holds the turn until it is released or the scope ends.
class BgLaunchTurn::Holder {
public:
    /// Waits for the turn while `mayGoOn()`, which is called under the lock.
    template <class MayGoOn>
    Holder(BgLaunchTurn& turn, MayGoOn mayGoOn) : _turn(turn) {
        std::unique_lock lock(turn._lock);
        turn._condition.wait(lock, [&] { return !turn._isHeld || !mayGoOn(); });
        _holds = !turn._isHeld;
        if (_holds) turn._isHeld = true;
    }
    ~Holder() { release(); }
    Holder(Holder const&) = delete;
    Holder& operator=(Holder const&) = delete;

    bool isHeld() const noexcept { return _holds; }
    void release() {
        if (!_holds) return;
        _holds = false;
        std::lock_guard const guard(_turn._lock);
        _turn._isHeld = false;
        _turn._condition.broadcast();
    }

private:
    BgLaunchTurn& _turn;
    bool _holds = false;
};

} // namespace Ko
