#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <chrono>

namespace Ko {

/// A point in time.
class LiDate {
public:
    /// The clock that the dates are read from.
    using Clock = std::chrono::system_clock;

    /// Now.
    LiDate() noexcept : LiDate(Clock::now()) {}
    explicit LiDate(Clock::time_point time) noexcept : _time(time) {}

    /// Dates compare as their times:
    Clock::time_point getTime() const noexcept { return _time; }
    auto operator<=>(LiDate const&) const noexcept = default;

private:
    Clock::time_point _time;
};

/// Dates as text, in the time zone of the machine and independent of its language. Any thread.
class KO_RESMGT_API LiDateFormat {
public:
    /// @param format 0 "2026-11-21", 1 "2026-11-21 17:04:09", 2 "2026-11-21T17:04:09+0100".
    /// @throws ExAssertionFailed for another format.
    static LiString format(LiDate const& date, int format);
};

} // namespace Ko
