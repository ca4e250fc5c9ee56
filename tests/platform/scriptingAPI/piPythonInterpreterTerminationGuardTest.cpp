#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"
#include "base/exBase.h"

#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using Guard = PiPythonInterpreterTerminationGuard;

TEST(PiPythonInterpreterTerminationGuard, IsHeldUntilTheLastOneOfAThreadEnds) {
    EXPECT_FALSE(Guard::isHeld());
    {
        Guard const outer;
        { Guard const inner; }
        EXPECT_TRUE(Guard::isHeld());
        EXPECT_THROW(Guard::endInterpreter([] {}), ExAssertionFailed) << "would wait for itself";
    }
    EXPECT_FALSE(Guard::isHeld());
}

TEST(PiPythonInterpreterTerminationGuard, IsNeverHeldByAnotherThreadWhileTheInterpreterEnds) {
    std::atomic<bool> isEnding = false;
    std::atomic<int> held = 0;
    std::latch firstIsHeld(4);
    std::vector<std::jthread> scripts;
    for (int thread = 0; thread < 4; ++thread)
        scripts.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                Guard const guard, nested;
                ++held;
                if (round == 0) firstIsHeld.arrive_and_wait();
                std::this_thread::yield();
                EXPECT_FALSE(isEnding);
                --held;
            }
        });
    firstIsHeld.wait();
    for (int round = 0; round < 50; ++round)
        Guard::endInterpreter([&] {
            isEnding = true;
            Guard const ownGuard;
            EXPECT_EQ(0, held);
            isEnding = false;
        });
}

TEST(PiPythonInterpreterTerminationGuard, IsFreeAgainWhenEndingTheInterpreterFails) {
    EXPECT_THROW(Guard::endInterpreter([] { throw std::runtime_error("end"); }), std::runtime_error);
    Guard const guard;
    EXPECT_TRUE(Guard::isHeld());
}

} // namespace
