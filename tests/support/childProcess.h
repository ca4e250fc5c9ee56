#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>

namespace KoTest {

/// Writes the failed expectations of this process to standard error, which the parent process shows.
inline void printFailures() {
    testing::TestResult const& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
    for (int index = 0; index < result.total_part_count(); ++index)
        if (testing::TestPartResult const& part = result.GetTestPartResult(index); part.failed())
            std::cerr << part.file_name() << ":" << part.line_number() << ": " << part.message() << std::endl;
}

/// Runs `body` in a child process, for operations that are possible once in a process or end it. Failed expectations of
/// `body` fail the test; its output on standard error must contain a match of `expectedErrors`.
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
