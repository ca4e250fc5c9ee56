#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>

namespace KoTest {

/// Writes the failed expectations of this process to standard error, where the parent of a child looks for its words.
inline void printFailures() {
    testing::TestResult const& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
    for (int index = 0; index < result.total_part_count(); ++index)
        if (testing::TestPartResult const& part = result.GetTestPartResult(index); part.failed())
            std::cerr << part.file_name() << ":" << part.line_number() << ": " << part.message() << std::endl;
}

/// Runs `body` in a process of its own, for what can happen once in a process or ends it. The expectations of `body` count,
/// and are shown with the parent's failure; what it writes to standard error must contain a match of `expectedErrors`.
template <class Body>
void inChildProcess(Body body, char const* expectedErrors = "") {
    EXPECT_EXIT(
        {
            body();
            KoTest::printFailures();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), expectedErrors);
}

} // namespace KoTest
