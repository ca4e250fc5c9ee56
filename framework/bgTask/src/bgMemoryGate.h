#pragma once

#include "resmgt/sleeper.h"

#include <atomic>
#include <cstdint>

namespace Ko {

/// Counts the running programs, and holds a further one back until there is enough memory for it or no other one runs.
class BgMemoryGate {
public:
    /// Waits while `mayGoOn()`, another program runs, and memory is short. Checks every `interval` seconds, and as soon as
    /// a program ends. Calls `onWait()` before. One thread at a time: the one that has the turn to launch.
    /// @returns whether a program may be launched now.
    template <class MayGoOn, class IsEnoughMemoryFree, class OnWait = void (*)()>
    [[nodiscard]] bool pass(
        MayGoOn mayGoOn, IsEnoughMemoryFree isEnoughMemoryFree, double interval, OnWait onWait = [] {}) {
        for (bool isFirst = true; mayGoOn(); isFirst = false) {
            if (_running == 0 || isEnoughMemoryFree()) return true;
            if (isFirst) onWait();
            _sleeper.sleep(interval);
        }
        return false;
    }
    /// Makes the waiting thread check at once. Any thread.
    void wake() { _sleeper.wake(); }

    class Running;

private:
    std::atomic<std::int32_t> _running{0};
    Sleeper _sleeper{"Background process memory gate"};
};

/// Counts a program as running for the length of a scope.
class [[nodiscard]] BgMemoryGate::Running {
public:
    explicit Running(BgMemoryGate& gate) : _gate(gate) { ++_gate._running; }
    ~Running() {
        --_gate._running;
        _gate.wake();
    }
    Running(Running const&) = delete;
    Running& operator=(Running const&) = delete;

private:
    BgMemoryGate& _gate;
};

} // namespace Ko
