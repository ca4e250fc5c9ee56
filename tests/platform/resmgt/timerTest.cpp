#include "resmgt/timer.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

// An interval timer whose time the test turns.
class ManualTimer {
public:
    static inline double now = 100.0;

    void start() noexcept { _begin = now; }
    double stop() noexcept { return getSecondsSoFar(); }
    double getSecondsSoFar() const noexcept { return now - _begin; }

private:
    double _begin = 0.0;
};

TEST(Timer, AddsUpTheIntervalsBetweenStartAndStop) {
    Timer<ManualTimer> timer("anonymous");
    struct {
        char const* steps; // s: start, p: stop, r: reset
        double seconds;    // that pass then
        double expected;
    } const rows[] = {{"", 1.0, 0.0}, {"p", 0.0, 0.0}, {"s", 2.0, 2.0}, {"pp", 4.0, 2.0}, {"s", 8.0, 10.0},
        {"s", 16.0, 18.0}, {"r", 0.0, 16.0}, {"pr", 1.0, 0.0}};
    for (auto const& row : rows) {
        for (char const step : std::string_view(row.steps))
            step == 's' ? timer.start() : step == 'p' ? timer.stop() : timer.reset();
        ManualTimer::now += row.seconds;
        EXPECT_EQ(row.expected, timer.getSeconds()) << row.steps;
    }
}

} // namespace
