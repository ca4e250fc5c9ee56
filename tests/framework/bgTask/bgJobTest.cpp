#include "framework/bgTask/bgEx.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/logRecorder.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using States = std::vector<int>;
using State = BgJobHintChangeState;

TEST(BgJobProtocol, KeepsTheLastQuotientAndPassesReportsOn) {
    struct Callback : BgProgressReport {
        void reportProgress(int done, int total) override { reports.emplace_back(done, total); }
        std::vector<std::pair<int, int>> reports;
    } callback;
    FunctionProtocol protocol([](FunctionProtocol&) {});
    protocol.reportProgress(1, 2);
    protocol.setProgressCallback(&callback);
    protocol.reportProgress(6, 4);
    EXPECT_EQ(1.5f, protocol.progress());
    protocol.setProgressCallback(nullptr);
    protocol.reportProgress(1, 0);
    EXPECT_TRUE(std::isinf(protocol.progress()));
    EXPECT_EQ((std::vector<std::pair<int, int>>{{6, 4}}), callback.reports);
}

TEST(BgJobProtocol, StopsUntilItIsStartedAgain) {
    class Protocol : public BgJobProtocol {
    public:
        Protocol() : BgJobProtocol("render") {}
        using BgJobProtocol::continueExecution;
        void execute() override {
            ++executions;
            EXPECT_TRUE(continueExecution());
            stop();
        }
        int executions = 0;
    } protocol;
    protocol.stop();
    EXPECT_FALSE(protocol.continueExecution());
    protocol.start();
    protocol.start();
    EXPECT_EQ(2, protocol.executions);
    EXPECT_EQ("unnamed job", protocol.getJobName());
    EXPECT_EQ("render", protocol.getJobType());
}

// Every way through the states, as observers hear of it.
struct Way {
    char const* name;
    char const* endState;
    States hints;
    void (*goes)(BgJob& job);
    void (*work)(FunctionProtocol& protocol, BgJob& job);
};
class BgJobWays : public testing::TestWithParam<Way> {};

TEST_P(BgJobWays, GoThroughTheStatesInOrder) {
    Way const& way = GetParam();
    BgJob* executed = nullptr;
    auto const job = FunctionProtocol::createJob([&](FunctionProtocol& protocol) { way.work(protocol, *executed); });
    executed = job.get();
    JobRecorder recorder;
    job->attachObserver(&recorder);
    EXPECT_EQ("Waiting", job->getState()->state());
    EXPECT_TRUE(job->isRunning());
    way.goes(*job);
    EXPECT_EQ(way.hints, recorder.states());
    EXPECT_EQ(way.endState, job->getState()->state());
    EXPECT_FALSE(job->isRunning());
    for (int times = 0; times < 2; ++times) { // what has ended stays so, also when it is released
        job->stop();
        job->execute();
        EXPECT_EQ(way.hints, recorder.states());
        EXPECT_TRUE(job->releaseProtocol());
        EXPECT_TRUE(job->isReleased());
    }
}

auto const nothing = [](FunctionProtocol&, BgJob&) {};
auto const mustNotRun = [](FunctionProtocol&, BgJob&) { ADD_FAILURE(); };
auto const executes = [](BgJob& job) { job.execute(); };

INSTANTIATE_TEST_SUITE_P(Ways, BgJobWays,
    testing::Values(Way{"Complete", "Complete", {State::Busy, State::Complete}, executes, nothing},
        Way{"Stopped", "Stopped", {State::Busy, State::Stopping, State::Stopped}, executes,
            [](FunctionProtocol& protocol, BgJob& job) {
                job.stop();
                EXPECT_EQ("Stopping", job.getState()->state());
                EXPECT_TRUE(job.isRunning());
                EXPECT_FALSE(protocol.continueExecution());
                job.stop();
            }},
        Way{"StoppedWhileWaiting", "Stopped", {State::Stopped},
            [](BgJob& job) {
                job.stop();
                job.execute();
                EXPECT_NE("", job.getStatistics().started()) << "a worker took it";
            },
            mustNotRun},
        Way{"ReleasedWhileWaiting", "Stopped", {State::Stopped}, [](BgJob& job) { EXPECT_TRUE(job.releaseProtocol()); },
            mustNotRun},
        Way{"Failed", "Failed", {State::Busy, State::Failed}, executes, [](FunctionProtocol&, BgJob&) { throw 5; }},
        Way{"FailedWhileStopping", "Failed", {State::Busy, State::Stopping, State::Failed}, executes,
            [](FunctionProtocol&, BgJob& job) {
                job.stop();
                throw std::runtime_error("too late");
            }}),
    [](auto const& row) { return row.param.name; });

TEST(BgJob, KeepsACopyOfWhatDerivesFromExBase) {
    auto const failed =
        FunctionProtocol::createJob([](FunctionProtocol&) { throw BgEx::ExBgTaskFailed("file", 7, "no space"); });
    EXPECT_EQ(nullptr, failed->cloneError());
    failed->execute();
    auto const error = failed->cloneError();
    ASSERT_NE(nullptr, error);
    EXPECT_NE(nullptr, failed->cloneError());
    EXPECT_EQ("A background job failed: no space", error->getReason());

    auto const strange = FunctionProtocol::createJob([](FunctionProtocol&) { throw std::runtime_error("x"); });
    strange->execute();
    EXPECT_EQ(nullptr, strange->cloneError());
}

std::vector<float> toldOf(std::vector<std::pair<int, int>> const& reports, float slice = 0.05f) {
    auto const job = FunctionProtocol::createJob([&](FunctionProtocol& protocol) {
        for (auto const& [done, total] : reports)
            protocol.reportProgress(done, total);
    });
    job->setNotifProgressSlice(slice);
    JobRecorder recorder;
    job->attachObserver(&recorder);
    job->execute();
    return recorder.progress();
}

TEST(BgJob, TellsOfProgressBySlices) {
    using Told = std::vector<float>;
    int const most = std::numeric_limits<int>::max();
    struct Row {
        char const* name;
        std::vector<std::pair<int, int>> reports;
        float slice;
        Told told;
    };
    for (Row const& row : {Row{"forwards", {{1, 100}, {4, 100}, {5, 100}, {9, 100}, {11, 100}}, 0.05f, {0.05f, 0.11f}},
             Row{"backwards", {{50, 100}, {49, 100}, {51, 100}}, 0.05f, {0.5f, 0.49f}},
             Row{"the last step is always told", {{98, 100}, {100, 100}, {100, 100}}, 0.05f, {0.98f, 1.0f}},
             Row{"limited", {{150, 100}, {-3, 100}}, 0.05f, {1.0f, 0.0f}},
             Row{"no number", {{0, 0}, {1, 2}, {0, 0}, {1, 1}}, 0.05f, {0.5f, 1.0f}},
             Row{"infinite", {{1, 0}, {-1, 0}}, 0.05f, {1.0f, 0.0f}},
             Row{"extreme", {{most, 1}, {1, most}}, 0.05f, {1.0f, 1.0f / 2147483648.0f}},
             Row{"every rise", {{1, 1000}, {1, 1000}, {2, 1000}}, 0.0f, {0.001f, 0.001f, 0.002f}},
             Row{"only the end", {{1, 2}, {99, 100}, {1, 1}}, 1.0f, {1.0f}},
             Row{"above 1", {{4, 100}, {5, 100}}, 1.5f, {0.05f}}, Row{"below 0", {{4, 100}, {5, 100}}, -0.1f, {0.05f}},
             Row{"no slice", {{4, 100}, {5, 100}}, std::nanf(""), {0.05f}}})
        EXPECT_EQ(row.told, toldOf(row.reports, row.slice)) << row.name;
}

TEST(BgJob, KeepsStatisticsOfItsTimes) {
    auto const stamp = testing::ContainsRegex("^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}$");
    for (int const done : {1, 2}) {
        auto const job = FunctionProtocol::createJob([done](FunctionProtocol& self) { self.reportProgress(done, 2); });
        EXPECT_THAT(job->getStatistics().submitted(), stamp);
        EXPECT_EQ("", job->getStatistics().started());
        job->execute();
        BgJobStatistics const after = job->getStatistics();
        EXPECT_THAT(after.started(), stamp);
        if (done == 2) {
            EXPECT_THAT(after.ended(), stamp);
        } else {
            EXPECT_EQ("", after.ended()) << "complete, but short of its end";
        }
        EXPECT_EQ(static_cast<float>(done) / 2, after.progress());
        job->releaseProtocol();
        EXPECT_EQ(after.progress(), job->getStatistics().progress()) << "still safe to ask";
    }
}

TEST(BgJob, TellsAllObserversInOneOrderWhateverTheyDo) {
    LogRecorder const log;
    auto const job = FunctionProtocol::createJob([](FunctionProtocol& self) { self.reportProgress(1, 1); });
    JobRecorder stopper([&](ObHints const& hints) {
        auto const change = hints.pickHint<BgJobHintChangeState>();
        if (change && change->getJobState() == State::Busy) job->stop();
    });
    JobRecorder thrower([](ObHints const&) { throw std::runtime_error("not my day"); });
    JobRecorder follower;
    for (JobRecorder* const observer : {&stopper, &thrower, &follower})
        job->attachObserver(observer);
    job->execute();
    EXPECT_EQ((States{State::Busy, State::Stopping, State::Stopped}), stopper.states());
    EXPECT_EQ(stopper.states(), follower.states());
    EXPECT_EQ(std::vector<std::string>(4, "Errors:0 An observer failed: not my day"), log.lines());
}

TEST(BgJob, IsStoppedToBeReleased) {
    GatedJob busy([](FunctionProtocol& self) {
        while (self.continueExecution())
            std::this_thread::yield();
    });
    std::jthread const worker([&] { busy.job->execute(); });
    busy.letGo();
    EXPECT_TRUE(busy.job->releaseProtocol());
    busy.job->stop(); // whatever became of that
}

} // namespace
