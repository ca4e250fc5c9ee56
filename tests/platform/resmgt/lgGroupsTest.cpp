#include "resmgt/lgGroups.h"
#include "base/assertions.h"
#include "base/exBase.h"
#include "resmgt/lgFirstError.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "variables.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::inChildProcess;
using KoTest::LogRecorder;

LgMajorGroup& testing_() {
    return LgMajorGroup::getInstanceForName("Testing");
}

TEST(LgLevels, TheMostSpecificRuleWinsAndTheLastAmongEqualOnes) {
    LgMinorGroup const group(testing_(), "Levels");
    for (auto const& [rules, expected] : std::vector<std::pair<char const*, int>>{{"*:5", 5}, {"Testing:6", 6},
             {"*:2", 6}, {"Testing.Levels:7,Testing:1", 7}, {"Testing.Other:0,Other.Levels:0", 7},
             {"Testing.Levels:4, Testing.Levels:8 ", 8}}) {
        LgLevels::set(rules);
        EXPECT_TRUE(group.isEnabled(expected)) << rules;
        EXPECT_FALSE(group.isEnabled(expected + 1)) << rules;
    }
    EXPECT_TRUE(LgMinorGroup(testing_(), "Levels").isEnabled(8)) << "also a group that is made later";
}

TEST(LgMinorGroup, MakesATextOnlyForALevelThatIsOn) {
    LogRecorder const log(4);
    LgMinorGroup const group(testing_(), "Texts");
    group.log(5, []() -> std::string { throw std::logic_error("made"); });
    group.log(4, [] { return std::string("text"); });
    EXPECT_EQ((std::vector<std::string>{"Texts:4 text"}), log.lines());
}

TEST(LgLevels, ReportsAMalformedRuleAndGoesOn) {
    for (char const* const rule :
        {"Testing", "Testing:", "Testing:x", "Testing:12", ":3", "Testing.:3", ".A:3", "*.A:3"})
        inChildProcess(
            [rule] {
                LgLevels::set(std::string(rule) + ",,Testing.Rules:9");
                EXPECT_TRUE(LgMinorGroup(testing_(), "Rules").isEnabled(9));
            },
            "is not of the form Major.Minor:level");
}

TEST(LgLevels, ComeFromTheEnvironmentAndGoToStandardError) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    KoTest::setVariable("KO_LOG", "Testing.Environment:6");
    inChildProcess(
        [] {
            LgMinorGroup const group(testing_(), "Environment");
            group.write(7, "hidden");
            group.write(6, "shown");
        },
        "^\\[Testing.Environment:6\\] shown\n$");
    KoTest::unsetVariable("KO_LOG");
}

struct FunctionSink : LgSink {
    explicit FunctionSink(std::function<void()> itsFunction) : function(std::move(itsFunction)) {}
    void write(LgRecord const&) override { function(); }
    std::function<void()> const function;
};

// Removes the sinks for the length of a test.
struct LgSinksTest : testing::Test {
    ~LgSinksTest() override { LgSinks::replace(before); }

    LgSinks::Sinks const before = LgSinks::replace({});
    LgMinorGroup const group{testing_(), "Sinks"};
    int calls = 0;
};

TEST_F(LgSinksTest, OneThatThrowsOrLogsDisturbsNeitherTheWriterNorTheOthers) {
    auto const bad = std::make_shared<FunctionSink>([&] {
        ++calls;
        group.write(0, "from inside");
        throw std::runtime_error("disk full");
    });
    LogRecorder const log;
    LgSinks::add(bad);
    group.write(0, "a");
    LgSinks::remove(bad);
    group.write(0, "b");
    EXPECT_EQ((std::vector<std::string>{"Sinks:0 a", "Sinks:0 b"}), log.lines());
    EXPECT_EQ(1, calls);
}

TEST_F(LgSinksTest, AreNotCalledAnyMoreWhenOneBeforeThemRemovesThem) {
    auto const removed = std::make_shared<FunctionSink>([&] { ++calls; });
    LgSinks::replace({std::make_shared<FunctionSink>([&] { LgSinks::remove(removed); }), removed});
    group.write(0, "line");
    EXPECT_EQ(0, calls);
}

TEST_F(LgSinksTest, AreNotCalledAnyMoreOnceTheyAreRemovedWhoeverWrites) {
    std::atomic<bool> stop = false;
    std::vector<std::jthread> writers;
    for (int index = 0; index < 8; ++index)
        writers.emplace_back([&] {
            while (!stop)
                group.write(0, "line");
        });
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> removed = false;
        std::latch heard(1);
        std::atomic<bool> first = true;
        auto const sink = std::make_shared<FunctionSink>([&] {
            if (first.exchange(false)) heard.count_down();
            std::this_thread::yield();
            EXPECT_FALSE(removed);
        });
        LgSinks::add(sink);
        heard.wait();
        LgSinks::remove(sink);
        removed = true;
    }
    stop = true;
}

TEST_F(LgSinksTest, AreDestroyedWhileNoLockIsHeld) {
    class Sink final : public LgSink {
    public:
        explicit Sink(LgMinorGroup const& itsGroup) : _group(itsGroup) {}
        ~Sink() override {
            std::thread([this] { _group.write(0, "from another thread"); }).join();
        }
        void write(LgRecord const&) override { LgSinks::replace({}); }

    private:
        LgMinorGroup const& _group;
    };
    LgSinks::add(std::make_shared<Sink>(group));
    group.write(0, "line");
}

TEST(LgFirstError, RunsEveryStepThrowsTheFirstErrorAndLogsTheOthers) {
    LogRecorder const log;
    LgFirstError error("A step");
    bool isDone = false;
    error.capture([] { throw ExInternalError("source", 1, "first"); });
    error.capture([] { throw ExNullPtr("source", 1, "second"); });
    error.capture([] { throw 3; });
    error.capture([&] { isDone = true; });
    EXPECT_TRUE(isDone);
    EXPECT_THROW(error.rethrow(), ExInternalError);
    EXPECT_EQ((std::vector<std::string>{"Errors:0 A step failed: Ko::ExNullPtr: second",
                  "Errors:0 A step failed: an exception of an unknown type"}),
        log.lines());
}

TEST(Assertions, WriteFatalErrorsToTheLog) {
    LogRecorder const log;
    EXPECT_THROW(AssertionSource("some\\source").abort("no way out", 12), ExProgramAborted);
    EXPECT_EQ((std::vector<std::string>{"Errors:0 Program aborted: no way out (some\\source, line 12)"}), log.lines());
}

} // namespace
