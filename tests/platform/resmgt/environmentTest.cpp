#include "base/exBase.h"
#include "resmgt/envIntVar.h"
#include "resmgt/osEnv.h"
#include "resmgt/osMemoryArch.h"
#include "tests/support/logRecorder.h"
#include "variables.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

/// Asks for the value of a variable whenever something is logged.
struct Asking : LgSink {
    explicit Asking(EnvIntVar& itsVariable) : variable(itsVariable) {}
    void write(LgRecord const&) override { EXPECT_EQ(7, variable.get()); }
    EnvIntVar& variable;
};

TEST(EnvIntVar, TakesWholeNumbersAndReportsEverythingElse) {
    for (auto const& [text, expected, isReported] : std::vector<std::tuple<char const*, int, bool>>{{nullptr, 7, false},
             {"-12", -12, false}, {"2147483647", 2147483647, false}, {"2147483648", 7, true}, {"", 7, true},
             {"12 ", 7, true}, {"many", 7, true}}) {
        text ? KoTest::setVariable("KO_TEST_NUMBER", text) : KoTest::unsetVariable("KO_TEST_NUMBER");
        LogRecorder const log;
        EnvIntVar variable("KO_TEST_NUMBER", 7, "some\\source");
        LgSinks::add(std::make_shared<Asking>(variable));
        EXPECT_EQ(expected, variable.get()) << text;
        KoTest::setVariable("KO_TEST_NUMBER", "99");
        EXPECT_EQ(expected, variable.get()) << "read once";
        ASSERT_EQ(isReported ? 1u : 0u, log.lines().size()) << text;
        if (!isReported) continue;
        for (char const* const part : {"KO_TEST_NUMBER", text, "some\\source"})
            EXPECT_NE(std::string::npos, log.lines()[0].find(part)) << log.lines()[0];
    }
}

TEST(OsEnv, DefinesAndListsVariables) {
    LiString value = "untouched";
    KoTest::unsetVariable("KO_TEST_TEXT");
    EXPECT_FALSE(OsEnv::getVariable("KO_TEST_TEXT", value));
    EXPECT_EQ("untouched", value);
    OsEnv::putVariable(L"KO_TEST_TEXT=a=b gr\u00fcn \U0001F3A8");
    EXPECT_TRUE(OsEnv::getVariable("KO_TEST_TEXT", value));
    EXPECT_FALSE(OsEnv::getVariable(LiString("KO_TEST_TEXT\0", 13), value));
    EXPECT_EQ("a=b gr\xC3\xBCn \xF0\x9F\x8E\xA8", value);
    OsEnv::putVariable(LiString("KO_TEST_TEXT=narrow"));
    auto const entries = OsEnv::getEntries();
    EXPECT_EQ(1, std::count(entries.begin(), entries.end(), "KO_TEST_TEXT=narrow"));
    EXPECT_THROW(OsEnv::putVariable(L"nothing assigned"), ExAssertionFailed);
    EXPECT_THROW(OsEnv::putVariable(L"=nameless"), ExAssertionFailed);
    EXPECT_THROW(OsEnv::putVariable(LiString("KO_TEST_TEXT=\0x", 15)), ExAssertionFailed);
}

TEST(OsMemoryArch, KnowsTheMemoryOfTheMachine) {
    auto const memory = OsMemoryArch::getInstance().getMemory();
    EXPECT_GT(memory.freePhysical, 1u << 20);
    EXPECT_LT(memory.freePhysical, memory.totalPhysical);
}

} // namespace
