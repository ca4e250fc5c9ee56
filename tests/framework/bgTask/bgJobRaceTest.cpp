#include "base/evEventManager.h"
#include "framework/bgTask/bgManager.h"
#include "tests/support/functionProtocol.h"

#include <atomic>
#include <barrier>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using States = std::vector<int>;
using State = BgJobHintChangeState;

constexpr int rounds = 2000;

int effort() {
    char const* const given = std::getenv("KO_TEST_EFFORT");
    return given ? std::atoi(given) : 1;
}

struct Operation {
    char const* name;
    void (*run)(BgJob& job);
};

constexpr Operation operations[] = {{"Stop", [](BgJob& job) { job.stop(); }},
    {"RequestStop", [](BgJob& job) { job.requestStop(); }},
    {"Release", [](BgJob& job) { EXPECT_TRUE(job.releaseProtocol()); }}, {"Pause", [](BgJob& job) { job.pause(); }},
    {"PauseAndResume",
        [](BgJob& job) {
            job.pause();
            job.resume();
        }},
    {"Question",
        [](BgJob& job) {
            for (int times = 0; times < 3; ++times) {
                static_cast<void>(job.getStatistics());
                static_cast<void>(job.getRemaining());
                static_cast<void>(job.cloneError());
                static_cast<void>(job.getState()->state());
                EXPECT_EQ("test job", job.getName());
                static_cast<void>(job.getReason());
                static_cast<void>(job.getPhase() + job.getUnits().unit);
                static_cast<void>(job.getResult<int>());
                job.setNotifProgressSlice(0.01f);
            }
        }},
    {"Subscribe", [](BgJob& job) {
         auto const ended = job.onEnd([](BgJob&) {});
         auto const phase = job.on<BgJobHintPhase>([](BgJobHintPhase const&) {}, ObDelivery::Here);
         static_cast<void>(job.subscribe([](ObHints const&) {}, ObDelivery::ApplicationThread));
     }}};

/// Two operations on a job that a third thread executes.
class BgJobRace : public testing::TestWithParam<std::tuple<Operation, Operation>> {
protected:
    void prepare(int round) {
        job = FunctionProtocol::createJob([round](FunctionProtocol& protocol) {
            protocol.reportPhase("begun");
            // Every second job only ends when it is stopped.
            while (protocol.continueExecution() && round % 2 == 0) {
                protocol.reportUnits(1, 2, "parts");
                protocol.reportMessage(BgMessage::Severity::Warning, "again");
                std::this_thread::yield();
            }
            protocol.setResult(round);
        });
    }
    void loop(std::barrier<>& together, void (*run)(BgJob&)) {
        for (;;) {
            together.arrive_and_wait();
            if (isDone) return;
            run(*job);
            together.arrive_and_wait();
        }
    }

    RCShdPtr<BgJob> job;
    std::atomic<bool> isDone{false};
};

TEST_P(BgJobRace, EndsTheJobInOrder) {
    auto const& [first, second] = GetParam();
    EvEventManager& events = EvEventManager::getInstance();
    std::barrier<> executing(2), operating(2);
    std::jthread const worker([&] { loop(executing, [](BgJob& executed) { executed.execute(); }); });
    std::jthread const other([&] { loop(operating, second.run); });
    for (int round = 0; round < 200 * effort(); ++round) {
        prepare(round);
        JobRecorder recorder;
        job->attachObserver(&recorder);
        int ends = 0;
        auto const ended = job->onEnd([&](BgJob&) { ++ends; });
        executing.arrive_and_wait();
        operating.arrive_and_wait();
        first.run(*job);
        operating.arrive_and_wait();
        job->stop();
        executing.arrive_and_wait();
        EXPECT_THAT(recorder.states(), testing::AnyOf(States{State::Stopped}, States{State::Busy, State::Complete},
                                           States{State::Busy, State::Stopping, State::Stopped}));
        EXPECT_FALSE(job->isPaused());
        EXPECT_TRUE(job->releaseProtocol());
        events.processEvents();
        EXPECT_EQ(1, ends);
        job->detachObserver(&recorder);
    }
    isDone = true;
    executing.arrive_and_wait();
    operating.arrive_and_wait();
}

INSTANTIATE_TEST_SUITE_P(AtAnyMoment, BgJobRace,
    testing::Combine(testing::ValuesIn(operations), testing::ValuesIn(operations)),
    [](auto const& row) { return std::string(std::get<0>(row.param).name) + "And" + std::get<1>(row.param).name; });

// Each job of a row waits for the one before it, while they are stopped, paused, moved and asked on two threads.
TEST(BgManagerRace, JobsThatWaitForOthersAlwaysEnd) {
    BgManager& manager = BgManager::getInstance();
    for (int round = 0; round < 200 * effort(); ++round) {
        std::vector<RCShdPtr<BgJob>> jobs;
        std::barrier<> together(2);
        for (int job = 0; job < 4; ++job)
            jobs.push_back(FunctionProtocol::createJob([](FunctionProtocol& self) { self.reportPhase("run"); }));
        std::jthread const other([&] {
            together.arrive_and_wait();
            for (std::size_t job = 0; job < jobs.size(); ++job)
                operations[(static_cast<std::size_t>(round) / 7 + job) % 5].run(*jobs[(job + 1) % jobs.size()]);
        });
        auto const list = manager.onJobs([](BgManagerHintJobs const&) {}, BgFollow::JobsAndUiJobs);
        together.arrive_and_wait();
        for (std::size_t job = 0; job < jobs.size(); ++job) {
            Vector<RCShdPtr<BgJob>> const before(jobs.begin(), jobs.begin() + static_cast<long>(job));
            auto const onFailure = round % 2 ? BgAfter::OnFailure::Run : BgAfter::OnFailure::End;
            manager.addUiJob(jobs[job], 1, {before, onFailure});
            manager.moveToFront(jobs[job]);
            static_cast<void>(manager.getPredecessors(jobs[job]));
            operations[static_cast<std::size_t>(round) % 7].run(*jobs[job / 2]);
        }
        bool isDone = false;
        manager.stopAllJobs(std::chrono::minutes(5), [&](auto const& unended) { isDone = unended.empty(); });
        while (!isDone)
            EvEventManager::getInstance().processEvents();
        for (auto const& job : jobs)
            EXPECT_FALSE(job->isRunning());
        EXPECT_TRUE(manager.getJobs().empty());
    }
}

TEST(BgManagerRace, AJobThatIsSubmittedTwiceRunsOnce) {
    int executions = 0;
    for (int round = 0; round < rounds; ++round) {
        auto const job = FunctionProtocol::createJob([&](FunctionProtocol&) { ++executions; });
        BgManager::getInstance().addJob(job);
        BgManager::getInstance().addUiJob(job, 1);
        while (job->isRunning())
            std::this_thread::yield();
        BgManager::getInstance().stopAndDeleteJob(job);
    }
    EXPECT_EQ(rounds, executions);
    EXPECT_TRUE(BgManager::getInstance().getJobs().empty());
}

TEST(BgManagerRace, SeveralThreadsCanDeleteJobsAtOnce) {
    BgManager& manager = BgManager::getInstance();
    for (int round = 0; round < rounds / 4; ++round) {
        std::vector<RCShdPtr<BgJob>> jobs;
        for (int job = 0; job < 4; ++job)
            jobs.push_back(manager.addJob(FunctionProtocol::create()));
        std::vector<std::jthread> threads;
        for (auto const& job : jobs)
            threads.emplace_back([&manager, &job] { manager.stopAndDeleteJob(job); });
        EXPECT_GE(4u, manager.getJobs().size());
        threads.clear();
        EXPECT_TRUE(manager.getJobs().empty());
    }
    EvEventManager::getInstance().processEvents();
}

TEST(BgManagerRace, StopAllJobsEndsJobsThatWereJustSubmitted) {
    BgManager& manager = BgManager::getInstance();
    std::vector<RCShdPtr<BgJob>> jobs;
    for (int round = 0; round < rounds; ++round) {
        jobs.clear();
        for (int job = 0; job < 8; ++job) {
            auto protocol = FunctionProtocol::create([](FunctionProtocol& self) {
                while (self.continueExecution()) {
                    self.reportProgress(1, 2);
                    std::this_thread::yield();
                }
            });
            jobs.push_back(job % 2 ? manager.addUiJob(std::move(protocol), 1) : manager.addJob(std::move(protocol)));
        }
        manager.stopAllJobs();
        for (auto const& job : jobs) {
            EXPECT_FALSE(job->isRunning());
            EXPECT_TRUE(job->isReleased());
        }
    }
    EvEventManager::getInstance().processEvents();
}

} // namespace
