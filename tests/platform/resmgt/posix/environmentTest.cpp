#include "resmgt/osEnv.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(OsEnv, PassesOnBytesThatAreNoText) {
    OsEnv::putVariable(LiString("KO_TEST_TEXT=\xFF narrow"));
    auto const entries = OsEnv::getEntries();
    EXPECT_EQ(1, std::count(entries.begin(), entries.end(), "KO_TEST_TEXT=\xFF narrow"));
}

} // namespace
