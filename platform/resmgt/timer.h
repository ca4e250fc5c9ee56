#pragma once

#include <chrono>

namespace Ko {

/// Measures intervals on the system's steady clock.
class HwIntervalTimer {
public:
    /// Begins an interval.
    void start() noexcept { _begin = Clock::now(); }
    /// Ends the interval.
    /// @returns its length in seconds.
    double stop() noexcept { return getSecondsSoFar(); }
    /// Seconds since `start()`.
    double getSecondsSoFar() const noexcept { return std::chrono::duration<double>(Clock::now() - _begin).count(); }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point _begin;
};

/// A named stopwatch that adds up the intervals between `start()` and `stop()`.
template <class IntervalTimer>
class Timer {
public:
    /// @param name is not copied.
    explicit Timer(char const* name) noexcept : _name(name) {}

    /// As it was given.
    char const* getName() const noexcept { return _name; }
    /// Forgets the intervals that have ended.
    void reset() noexcept { _accumulatedSeconds = 0.0; }
    /// Begins an interval; one that is running is dropped.
    void start() noexcept {
        _stopped = 0;
        _clock.start();
    }
    /// Without effect on a timer that is not running.
    void stop() noexcept {
        if (_stopped) return;
        _stopped = 1;
        _accumulatedSeconds += _clock.stop();
    }
    /// The sum of all intervals since the last reset, in seconds, the running one included.
    double getSeconds() const noexcept {
        return _stopped ? _accumulatedSeconds : _accumulatedSeconds + _clock.getSecondsSoFar();
    }

private:
    char const* _name;
    int _stopped = 1;
    IntervalTimer _clock;
    double _accumulatedSeconds = 0.0;
};

} // namespace Ko
