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
    auto const passes = [&](double seconds) {
        ManualTimer::now += seconds;
        return timer.getSeconds();
    };
    EXPECT_STREQ("anonymous", timer.getName());
    EXPECT_EQ(0.0, passes(1.0)) << "not started";
    timer.stop();
    EXPECT_EQ(0.0, passes(0.0)) << "nothing was running";
    timer.start();
    EXPECT_EQ(2.0, passes(2.0)) << "running";
    timer.stop();
    timer.stop();
    EXPECT_EQ(2.0, passes(4.0)) << "stopped";
    timer.start();
    EXPECT_EQ(10.0, passes(8.0)) << "running again";
    timer.start();
    EXPECT_EQ(18.0, passes(16.0)) << "started anew";
    timer.reset();
    EXPECT_EQ(16.0, passes(0.0)) << "reset while running";
    timer.stop();
    timer.reset();
    EXPECT_EQ(0.0, passes(1.0)) << "reset";
}

TEST(HwIntervalTimer, NeverRunsBackwards) {
    HwIntervalTimer timer;
    timer.start();
    double const before = timer.getSecondsSoFar();
    EXPECT_LE(0.0, before);
    EXPECT_LE(before, timer.stop());
}

} // namespace
