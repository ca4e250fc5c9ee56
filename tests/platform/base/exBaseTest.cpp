#include "base/exBase.h"
#include "base/assertions.h"
#include "base/oPtr.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(ExBase, KeepsItsTypeReasonAndPlaceWhenStoredAndRaisedAgain) {
    OPtr<ExBase> stored;
    try {
        throw ExInternalError("some\\source", 12, "nothing works");
    } catch (ExBase const& error) {
        stored.reset(error.clone());
    }
    try {
        stored->raise();
    } catch (ExInternalError const& error) {
        EXPECT_EQ("nothing works", error.getReason());
        EXPECT_STREQ("some\\source", error.getFile());
        EXPECT_EQ(12, error.getLine());
        EXPECT_EQ("Ko::ExInternalError", error.getTypeName());
        return;
    }
    FAIL() << "raised as another type";
}

TEST(ExBase, PutsContextBeforeTheReason) {
    ExNullPtr error("source", 1, "inner");
    error.addContext("middle");
    error.addContext("outer");
    EXPECT_STREQ("outer: middle: inner", error.what());
}

TEST(Assertions, NameTheirSourceTheCallersLineAndTheExpression) {
    constexpr AssertionSource source{"module\\src\\file"};
    EXPECT_NO_THROW(source.require(true, "true"));
    int line = 0;
    try {
        line = __LINE__ + 1;
        source.require(1 > 2, "1 > 2");
        FAIL() << "not raised";
    } catch (ExAssertionFailed const& error) {
        EXPECT_STREQ("1 > 2", error.what());
        EXPECT_STREQ("module\\src\\file", error.getFile());
        EXPECT_EQ(line, error.getLine());
    }
}

} // namespace
