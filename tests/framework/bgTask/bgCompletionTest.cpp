#include "framework/bgTask/bgCompletion.h"

#include "base/evEventManager.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/thrown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using States = std::vector<int>;
using State = BgJobHintChangeState;

/// What runs the work of the jobs, as another machine would: keeps their completions.
class Completions {
public:
    BgCompletion& operator[](std::size_t index) {
        std::lock_guard const guard(_mutex);
        return _completions[index];
    }
    void add(BgCompletion completion) {
        std::lock_guard const guard(_mutex);
        _completions.push_back(std::move(completion));
    }
    void clear() { _completions.clear(); }
    std::size_t size() const {
        std::lock_guard const guard(_mutex);
        return _completions.size();
    }

private:
    mutable std::mutex _mutex;
    std::vector<BgCompletion> _completions;
};

/// Leaves its worker, and ends when it is stopped.
class Remote : public FunctionProtocol {
public:
    explicit Remote(Completions& elsewhere)
        : FunctionProtocol([&elsewhere](FunctionProtocol& self) { elsewhere.add(self.leaveWorker()); }),
          _elsewhere(elsewhere) {}
    void stop() override {
        FunctionProtocol::stop();
        if (_elsewhere.size() > 0) _elsewhere[0].complete();
    }

private:
    Completions& _elsewhere;
};

class BgCompletionTest : public testing::Test {
protected:
    ~BgCompletionTest() override {
        elsewhere.clear();
        manager.stopAllJobs();
        EvEventManager::getInstance().processEvents();
    }

    /// A job that executes on this thread, until it has left it.
    RCShdPtr<BgJob> run(FunctionProtocol::Function work) {
        auto job = FunctionProtocol::createJob(std::move(work));
        job->attachObserver(&recorder);
        job->execute();
        return job;
    }
    RCShdPtr<BgJob> runRemote() {
        return run([this](FunctionProtocol& self) { elsewhere.add(self.leaveWorker()); });
    }

    BgManager& manager = BgManager::getInstance();
    Completions elsewhere;
    JobRecorder recorder;
};

} // namespace

TEST_F(BgCompletionTest, TakesNoWorkerForWorkThatGoesOnElsewhere) {
    constexpr std::size_t numJobs = 50; // more than there are workers
    std::latch submitted(numJobs);
    std::vector<RCShdPtr<BgJob>> jobs;
    for (std::size_t number = 0; number < numJobs; ++number)
        jobs.push_back(manager.addJob(FunctionProtocol::create([&](FunctionProtocol& self) {
            elsewhere.add(self.leaveWorker());
            submitted.count_down();
        })));
    submitted.wait();
    for (auto const& job : jobs)
        EXPECT_EQ("Busy", job->getState()->state());
    std::jthread const other([this] {
        for (std::size_t index = 0; index < numJobs; ++index)
            elsewhere[index].complete();
    });
    auto const last = FunctionProtocol::createJob();
    Gate done;
    auto const subscription = last->on<State>(
        [&](State const& hint) {
            if (hint.getJobState() == State::Complete) done.open();
        },
        ObDelivery::Here);
    manager.addJob(last, BgAfter{{jobs.begin(), jobs.end()}});
    done.wait();
    for (auto const& job : jobs)
        EXPECT_EQ("Complete", job->getState()->state());
}

TEST_F(BgCompletionTest, EndsAJobAsItsExecutionWould) {
    struct Row {
        char const* name;
        std::function<void(BgJob& job, BgCompletion& completion)> end;
        States states;
        LiString reason;
    };
    auto const error = [](auto exception) { return std::make_exception_ptr(exception); };
    Row const rows[] = {{"complete", [](BgJob&, BgCompletion& completion) { completion.complete(); },
                            {State::Busy, State::Complete}, ""},
        {"stop",
            [](BgJob& job, BgCompletion& completion) {
                job.stop();
                completion.complete();
            },
            {State::Busy, State::Stopping, State::Stopped}, ""},
        {"library",
            [&](BgJob&, BgCompletion& completion) { completion.fail(error(BgEx::ExBgTaskFailed("file", 1, "full"))); },
            {State::Busy, State::Failed}, "A background job failed: full"},
        {"other", [&](BgJob&, BgCompletion& completion) { completion.fail(error(std::runtime_error("no node"))); },
            {State::Busy, State::Failed}, "no node"},
        {"given up", [](BgJob&, BgCompletion& completion) { completion = {}; }, {State::Busy, State::Failed},
            "The work was given up before its end."},
        {"twice",
            [&](BgJob&, BgCompletion& completion) {
                completion.complete();
                completion.fail(error(std::runtime_error("too late")));
            },
            {State::Busy, State::Complete}, ""}};
    for (Row const& row : rows) {
        JobRecorder states;
        auto const job =
            FunctionProtocol::createJob([this](FunctionProtocol& self) { elsewhere.add(self.leaveWorker()); });
        job->attachObserver(&states);
        job->execute();
        EXPECT_EQ("Busy", job->getState()->state()) << row.name;
        row.end(*job, elsewhere[elsewhere.size() - 1]);
        EXPECT_EQ(row.states, states.states()) << row.name;
        EXPECT_EQ(row.reason, job->getReason()) << row.name;
        EXPECT_TRUE(job->releaseProtocol()) << row.name;
    }
}

TEST_F(BgCompletionTest, RecordsTheEndWhereItIs) {
    auto const job = run([this](FunctionProtocol& self) {
        self.reportProgress(1, 1);
        elsewhere.add(self.leaveWorker());
    });
    EXPECT_FALSE(job->getTimes().ended);
    elsewhere[0].complete();
    EXPECT_TRUE(job->getTimes().ended);
}

TEST_F(BgCompletionTest, EndsBeforeItsExecutionReturns) {
    auto const job = run([](FunctionProtocol& self) {
        std::jthread([completion = self.leaveWorker()]() mutable { completion.complete(); }).join();
        throw std::runtime_error("too late");
    });
    EXPECT_EQ((States{State::Busy, State::Complete}), recorder.states());
}

TEST_F(BgCompletionTest, FailsByAnExceptionAfterItHasLeft) {
    auto const job = run([this](FunctionProtocol& self) {
        elsewhere.add(self.leaveWorker());
        throw std::runtime_error("not sent");
    });
    EXPECT_EQ("not sent", job->getReason());
    elsewhere[0].complete();
    EXPECT_EQ((States{State::Busy, State::Failed}), recorder.states());
    EXPECT_TRUE(job->releaseProtocol());
}

TEST_F(BgCompletionTest, IsReleasedOnlyAfterItsEnd) {
    auto const job = runRemote();
    manager.addJob(job);
    std::optional<std::size_t> unended;
    auto const stopAll = [&] {
        unended.reset();
        manager.stopAllJobs(std::chrono::milliseconds(1), [&](auto const& jobs) { unended = jobs.size(); });
        while (!unended)
            EvEventManager::getInstance().processEvents();
        return *unended;
    };
    EXPECT_EQ(1u, stopAll());
    EXPECT_FALSE(job->isReleased());
    elsewhere[0].complete();
    EXPECT_EQ("Stopped", job->getState()->state());
    EXPECT_EQ(0u, stopAll());
    EXPECT_TRUE(job->isReleased());
}

TEST_F(BgCompletionTest, IsEndedByItsOwnStop) {
    auto const job = BgJob::create(std::make_unique<Remote>(elsewhere));
    job->execute();
    job->stop();
    EXPECT_EQ("Stopped", job->getState()->state());
    EXPECT_TRUE(job->releaseProtocol());
}

TEST_F(BgCompletionTest, DoesNotMakeAnObserverOfTheEndWait) {
    std::optional<bool> wasReleased;
    auto const job = runRemote();
    auto const subscription =
        job->on<State>([&](State const& hint) { wasReleased = hint.getJob()->releaseProtocol(); }, ObDelivery::Here);
    elsewhere[0].complete();
    EXPECT_EQ(false, wasReleased);
    EXPECT_TRUE(job->releaseProtocol());
}

TEST_F(BgCompletionTest, IsEmptyWhereNoJobExecutes) {
    FunctionProtocol alone([](FunctionProtocol& self) { EXPECT_FALSE(self.leaveWorker()); });
    alone.start();
    FunctionProtocol* protocol = nullptr;
    auto const job = run([&](FunctionProtocol& self) { protocol = &self; });
    EXPECT_FALSE(caught<ExAssertionFailed>([&] { static_cast<void>(protocol->leaveWorker()); }).getReason().empty());
}

TEST_F(BgCompletionTest, EndsOnceWhateverHappensAtTheSameTime) {
    for (int round = 0; round < 500; ++round) {
        std::latch start(3);
        BgCompletion completion;
        JobRecorder states;
        auto const job = FunctionProtocol::createJob([&](FunctionProtocol& self) {
            completion = self.leaveWorker();
            start.arrive_and_wait();
        });
        job->attachObserver(&states);
        {
            std::jthread const worker([&] { job->execute(); });
            std::jthread const stopping([&] {
                start.arrive_and_wait();
                job->stop();
            });
            start.arrive_and_wait();
            completion.complete();
        }
        EXPECT_THAT(states.states(),
            testing::AnyOf(States{State::Busy, State::Complete}, States{State::Busy, State::Stopping, State::Stopped}));
        EXPECT_TRUE(job->releaseProtocol());
    }
}
