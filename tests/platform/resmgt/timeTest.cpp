#include "base/exBase.h"
#include "resmgt/liDate.h"
#include "resmgt/timer.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiDate, IsFormattedInTheTimeZoneOfTheMachine) {
    LiDate const date(LiDate::Clock::from_time_t(1351383000)); // the night at the end of summer time
    constexpr char const* central = "CET-1CEST,M3.5.0,M10.5.0/3";
    for (auto const& [zone, format, expected] : std::vector<std::tuple<char const*, int, char const*>>{
             {"UTC0", 0, "2012-10-28"}, {central, 1, "2012-10-28 02:10:00"}, {central, 2, "2012-10-28T02:10:00+0200"},
             {"HST10", 0, "2012-10-27"}, {"HST10", 2, "2012-10-27T14:10:00-1000"}}) {
        ::setenv("TZ", zone, 1);
        ::tzset();
        EXPECT_EQ(expected, LiDateFormat::format(date, format)) << zone;
    }
    EXPECT_THROW(static_cast<void>(LiDateFormat::format(date, 3)), ExAssertionFailed);
    EXPECT_THROW(static_cast<void>(LiDateFormat::format(date, -1)), ExAssertionFailed);
    LiDate const beforeTheEpoch(LiDate::Clock::time_point(std::chrono::milliseconds(-1)));
    EXPECT_EQ("1969-12-31T13:59:59-1000", LiDateFormat::format(beforeTheEpoch, 2)) << "rounded down";
    EXPECT_LE(LiDate(LiDate::Clock::from_time_t(1700000000)), LiDate()) << "the present time by default";
}

// An interval timer with a clock that the test sets.
struct ManualTimer {
    void start() noexcept { begin = now; }
    double stop() noexcept { return getSecondsSoFar(); }
    double getSecondsSoFar() const noexcept { return now - begin; }

    static inline double now = 100.0;
    double begin = 0.0;
};

// Steps: s starts, p stops, r resets. Then the given seconds pass.
TEST(Timer, AddsUpTheIntervalsBetweenStartAndStop) {
    Timer<ManualTimer> timer("anonymous");
    for (auto const& [steps, seconds, expected] :
        std::vector<std::tuple<char const*, double, double>>{{"", 1.0, 0.0}, {"p", 0.0, 0.0}, {"s", 2.0, 2.0},
            {"pp", 4.0, 2.0}, {"s", 8.0, 10.0}, {"s", 16.0, 18.0}, {"r", 0.0, 16.0}, {"pr", 1.0, 0.0}}) {
        for (char const step : std::string_view(steps))
            step == 's' ? timer.start() : step == 'p' ? timer.stop() : timer.reset();
        ManualTimer::now += seconds;
        EXPECT_EQ(expected, timer.getSeconds()) << steps;
    }
}

} // namespace
