#include "base/evEventManager.h"
#include "framework/bgTask/bgManager.h"
#include "tests/support/functionProtocol.h"

#include <atomic>
#include <barrier>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using States = std::vector<int>;
using State = BgJobHintChangeState;

constexpr int rounds = 2000;

/// Runs both functions on the same job at the same time, on two threads.
template <class First, class Second, class Check>
void race(First first, Second second, Check check) {
    std::barrier together(2);
    std::atomic<bool> done{false};
    RCShdPtr<BgJob> job;
    std::thread other([&] {
        for (;;) {
            together.arrive_and_wait();
            if (done) return;
            second(*job);
            together.arrive_and_wait();
        }
    });
    for (int round = 0; round < rounds; ++round) {
        job = FunctionProtocol::createJob([&](FunctionProtocol& protocol) {
            // Every second job only ends when it is stopped.
            while (round % 2 == 0 && protocol.continueExecution()) {
                protocol.reportProgress(1, 2);
                std::this_thread::yield();
            }
        });
        JobRecorder recorder;
        job->attachObserver(&recorder);
        together.arrive_and_wait();
        first(*job);
        together.arrive_and_wait();
        check(*job, recorder.states());
        job->detachObserver(&recorder);
    }
    done = true;
    together.arrive_and_wait();
    other.join();
}

using Action = void (*)(BgJob& job);

struct Race {
    char const* name;
    Action first, second;
};
class BgJobRace : public testing::TestWithParam<Race> {};

TEST_P(BgJobRace, EndsTheJobInOrder) {
    race(GetParam().first, GetParam().second, [](BgJob& job, States const& states) {
        EXPECT_THAT(states, testing::AnyOf(States{State::Stopped}, States{State::Busy, State::Complete},
                                States{State::Busy, State::Stopping, State::Stopped}));
        EXPECT_FALSE(job.isRunning());
        EXPECT_TRUE(job.releaseProtocol());
        EXPECT_TRUE(job.isReleased());
    });
}

Action const execute = [](BgJob& job) { job.execute(); };

INSTANTIATE_TEST_SUITE_P(AtAnyMoment, BgJobRace,
    testing::Values(Race{"Stop", execute, [](BgJob& job) { job.stop(); }},
        Race{"Release", execute, [](BgJob& job) { EXPECT_TRUE(job.releaseProtocol()); }},
        Race{"ReleaseAndStop",
            [](BgJob& job) {
                std::jthread worker([&job] { job.execute(); });
                job.stop();
            },
            [](BgJob& job) {
                EXPECT_TRUE(job.releaseProtocol());
                static_cast<void>(job.getStatistics());
            }},
        Race{"Question",
            [](BgJob& job) {
                job.execute();
                EXPECT_TRUE(job.releaseProtocol());
            },
            [](BgJob& job) {
                while (!job.isReleased()) {
                    static_cast<void>(job.getStatistics());
                    static_cast<void>(job.cloneError());
                    static_cast<void>(job.getState()->state());
                    job.setNotifProgressSlice(0.01f);
                    job.stop();
                }
            }}),
    [](auto const& row) { return row.param.name; });

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
