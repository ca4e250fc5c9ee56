#include "resmgt/timer.h"

#include <gtest/gtest.h>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using namespace Ko;

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
