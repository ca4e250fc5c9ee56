#include "base/exBase.h"
#include "resmgt/envIntVar.h"
#include "resmgt/osEnv.h"
#include "tests/support/logRecorder.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

TEST(EnvIntVar, TakesWholeNumbersAndReportsEverythingElse) {
    struct {
        char const* text;
        int expected;
        bool isReported;
    } const rows[] = {{nullptr, 7, false}, {"-12", -12, false}, {"2147483647", 2147483647, false},
        {"2147483648", 7, true}, {"", 7, true}, {"12 ", 7, true}, {"many", 7, true}};
    for (auto const& row : rows) {
        row.text ? ::setenv("KO_TEST_NUMBER", row.text, 1) : ::unsetenv("KO_TEST_NUMBER");
        LogRecorder const log;
        EnvIntVar variable("KO_TEST_NUMBER", 7, "some\\source");
        EXPECT_EQ(row.expected, variable.get()) << row.text;
        ::setenv("KO_TEST_NUMBER", "99", 1);
        EXPECT_EQ(row.expected, variable.get()) << "read once";
        ASSERT_EQ(row.isReported ? 1u : 0u, log.lines().size()) << row.text;
        if (!row.isReported) continue;
        for (char const* const part : {"KO_TEST_NUMBER", row.text, "some\\source"})
            EXPECT_NE(std::string::npos, log.lines()[0].find(part)) << log.lines()[0];
    }
}

TEST(OsEnv, DefinesAndListsVariables) {
    LiString value = "untouched";
    ::unsetenv("KO_TEST_TEXT");
    EXPECT_FALSE(OsEnv::getVariable("KO_TEST_TEXT", value));
    EXPECT_EQ("untouched", value);
    OsEnv::putVariable(L"KO_TEST_TEXT=a=b gr\u00fcn \U0001F3A8");
    EXPECT_TRUE(OsEnv::getVariable("KO_TEST_TEXT", value));
    EXPECT_EQ("a=b gr\xC3\xBCn \xF0\x9F\x8E\xA8", value);
    OsEnv::putVariable(LiString("KO_TEST_TEXT=\xFF narrow"));
    auto const entries = OsEnv::getEntries();
    EXPECT_EQ(1, std::count(entries.begin(), entries.end(), "KO_TEST_TEXT=\xFF narrow"));
    EXPECT_THROW(OsEnv::putVariable(L"nothing assigned"), ExAssertionFailed);
    EXPECT_THROW(OsEnv::putVariable(L"=nameless"), ExAssertionFailed);
}

} // namespace
