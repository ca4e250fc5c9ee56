#pragma once

#include <cstdlib>
#include <gtest/gtest.h>

namespace KoTest {

/// Runs `body` in a process of its own, for what can happen once in a process or ends it. The expectations of `body` count,
/// and are printed by the child; what it writes to standard error must contain a match of `expectedErrors`.
template <class Body>
void inChildProcess(Body body, char const* expectedErrors = "") {
    EXPECT_EXIT(
        {
            body();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), expectedErrors);
}

} // namespace KoTest
