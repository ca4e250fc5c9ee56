#pragma once

#include "resmgt/lgGroups.h"
#include "tests/support/allocationFaults.h"

#include <gtest/gtest.h>
#include <thread>

namespace KoTest {

/// Base of the tests in which memory runs out. What the log is told of that is written nowhere.
class FaultsTest : public testing::Test {
protected:
    ~FaultsTest() override { Ko::LgSinks::replace(_sinks); }

    /// Waits for what other threads do, without memory of its own.
    template <class Condition>
    static void waitUntil(Condition condition) {
        while (!condition())
            std::this_thread::yield();
    }

private:
    Ko::LgSinks::Sinks const _sinks = Ko::LgSinks::replace({});
};

} // namespace KoTest
