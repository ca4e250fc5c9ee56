#include "base/inInitMgr.h"

#include <gtest/gtest.h>

// Runs all tests of a program within one start-up of the framework, on its application thread.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // A child process of a test starts the program again: a copy of this process would lack its workers.
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    Ko::InInitScope const scope(argc, argv);
    return RUN_ALL_TESTS();
}
