#include "base/exBase.h"
#include "base/assertions.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::caught;

TEST(ExBase, PutsContextBeforeTheReason) {
    ExNullPtr error("source", 1, "inner");
    error.addContext("middle");
    error.addContext("outer");
    EXPECT_STREQ("outer: middle: inner", error.what());
}

TEST(Assertions, NameTheirSourceTheCallersLineAndTheExpression) {
    constexpr AssertionSource source{"module\\src\\file"};
    EXPECT_NO_THROW(source.require(true, "true"));
    int const line = __LINE__ + 1;
    auto const error = caught<ExAssertionFailed>([&] { source.require(1 > 2, "1 > 2"); });
    EXPECT_STREQ("1 > 2", error.what());
    EXPECT_STREQ("module\\src\\file", error.getFile());
    EXPECT_EQ(line, error.getLine());
}

} // namespace
