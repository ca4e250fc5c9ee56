#pragma once

#include <chrono>

namespace Ko {

/// Measures intervals with the steady clock of the system.
class HwIntervalTimer {
public:
    /// Starts an interval.
    void start() noexcept { _begin = Clock::now(); }
    /// Ends the interval. @returns its length in seconds.
    double stop() noexcept { return getSecondsSoFar(); }
    /// Seconds since `start()`.
    [[nodiscard]] double getSecondsSoFar() const noexcept {
        return std::chrono::duration<double>(Clock::now() - _begin).count();
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point _begin;
};

/// A named stopwatch that adds up the intervals between `start()` and `stop()`.
template <class IntervalTimer>
class Timer {
public:
    /// @param name is not copied and must live as long as the timer.
    explicit Timer(char const* name) noexcept : _name(name) {}

    /// The name given to the constructor.
    [[nodiscard]] char const* getName() const noexcept { return _name; }
    /// Sets the sum of the ended intervals to zero.
    void reset() noexcept { _accumulatedSeconds = 0.0; }
    /// Starts an interval. An interval that is running is discarded.
    void start() noexcept {
        _stopped = 0;
        _clock.start();
    }
    /// Ends the running interval, if any, and adds it to the sum.
    void stop() noexcept {
        if (_stopped) return;
        _stopped = 1;
        _accumulatedSeconds += _clock.stop();
    }
    /// The sum of all intervals since the last reset, including the running one, in seconds.
    [[nodiscard]] double getSeconds() const noexcept {
        return _stopped ? _accumulatedSeconds : _accumulatedSeconds + _clock.getSecondsSoFar();
    }

private:
    char const* _name;
    int _stopped = 1;
    IntervalTimer _clock;
    double _accumulatedSeconds = 0.0;
};

} // namespace Ko
