#include "resmgt/sleeper.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;

constexpr double forEver = 1e6;

TEST(Sleeper, SleepsUntilItIsWokenOrItsTimeIsOver) {
    Sleeper sleeper("Test");
    EXPECT_FALSE(sleeper.sleep(0.001));
    EXPECT_FALSE(sleeper.sleep(-1));
    std::thread wakes([&] { sleeper.wake(); });
    EXPECT_TRUE(sleeper.sleep(forEver));
    wakes.join();
}

TEST(Sleeper, IsWokenOnceByAllThatCameBefore) {
    Sleeper sleeper("Test");
    sleeper.wake();
    sleeper.wake();
    EXPECT_TRUE(sleeper.sleep(forEver));
    EXPECT_FALSE(sleeper.sleep(0));
}

} // namespace
