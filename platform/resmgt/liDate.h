#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <chrono>

namespace Ko {

/// A point in time.
class LiDate {
public:
    /// The clock of all dates.
    using Clock = std::chrono::system_clock;

    /// The present time.
    LiDate() noexcept : LiDate(Clock::now()) {}
    /// The given time.
    explicit LiDate(Clock::time_point time) noexcept : _time(time) {}

    /// The point in time.
    [[nodiscard]] Clock::time_point getTime() const noexcept { return _time; }
    /// Earlier dates are less.
    auto operator<=>(LiDate const&) const noexcept = default;

private:
    Clock::time_point _time;
};

/// Formats dates in the time zone of the machine, independent of its language. Any thread.
class KO_RESMGT_API LiDateFormat {
public:
    /// The date as text; fractions of a second are dropped.
    /// @param format 0 "2026-11-21", 1 "2026-11-21 17:04:09", 2 "2026-11-21T17:04:09+0100".
    /// @throws ExAssertionFailed for another format.
    [[nodiscard]] static LiString format(LiDate const& date, int format);
};

} // namespace Ko
