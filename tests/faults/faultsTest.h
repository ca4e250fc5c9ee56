#pragma once

#include "resmgt/lgGroups.h"
#include "tests/support/allocationFaults.h"

#include <gtest/gtest.h>
#include <thread>

namespace KoTest {

/// Base of tests in which memory runs out. Log lines are discarded.
class FaultsTest : public testing::Test {
protected:
    ~FaultsTest() override { Ko::LgSinks::replace(_sinks); }

    /// Waits for a condition that other threads fulfil, without allocating memory.
    template <class Condition>
    static void waitUntil(Condition condition) {
        while (!condition())
            std::this_thread::yield();
    }

private:
    Ko::LgSinks::Sinks const _sinks = Ko::LgSinks::replace({});
};

} // namespace KoTest
