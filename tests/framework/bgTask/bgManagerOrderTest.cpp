#include "base/evEventManager.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/logRecorder.h"
#include "tests/support/thrown.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

struct EndOfHold {
    char const* name;
    void (*end)(BgJob& job);
    bool goesOn;
};

/// Both workers of the high priority group are busy until the gates are opened, so the order in its queue can be tested.
class BgManagerOrder : public testing::Test {
protected:
    BgManagerOrder() {
        for (GatedJob& blocking : blockers) {
            manager.addUiJob(blocking.job, 1);
            blocking.started.wait();
        }
    }
    ~BgManagerOrder() override {
        openAll();
        manager.stopAllJobs();
        EvEventManager::getInstance().processEvents();
    }

    RCShdPtr<BgJob> make(char name) {
        return FunctionProtocol::createJob([this, name](FunctionProtocol& self) {
            self.reportProgress(1, 1);
            std::lock_guard const guard(mutex);
            executed += name;
        });
    }
    RCShdPtr<BgJob> add(char name) {
        auto const job = make(name);
        manager.addUiJob(job, 1);
        return job;
    }
    RCShdPtr<BgJob> addAfter(
        char name, Vector<RCShdPtr<BgJob>> predecessors, BgAfter::OnFailure onFailure = BgAfter::OnFailure::End) {
        auto const job = make(name);
        manager.addUiJob(job, 1, {std::move(predecessors), onFailure});
        return job;
    }
    // One worker, so that jobs run in the order of the queue.
    void openOne() { blockers[0].gate.open(); }
    void openAll() {
        for (GatedJob& blocking : blockers)
            blocking.gate.open();
    }
    static void expectHeldUntil(EndOfHold const& row);
    static void waitFor(BgJob const& job) {
        while (job.isRunning())
            std::this_thread::yield();
    }
    std::string runAll(BgJob const& last) {
        openOne();
        waitFor(last);
        std::lock_guard const guard(mutex);
        return executed;
    }

    BgManager& manager = BgManager::getInstance();
    std::array<GatedJob, 2> blockers;
    std::mutex mutex;
    std::string executed;
};

TEST_F(BgManagerOrder, MovesWaitingJobsToTheFront) {
    auto const a = add('a');
    auto const b = add('b');
    auto const c = add('c');
    EXPECT_TRUE(manager.moveToFront(c));
    EXPECT_TRUE(manager.moveToFront(b));
    EXPECT_FALSE(manager.moveToFront(blockers[0].job));
    EXPECT_FALSE(manager.moveToFront(make('x')));
    EXPECT_EQ("bca", runAll(*a));
}

TEST_F(BgManagerOrder, PausedJobsKeepTheirPlaces) {
    auto const a = add('a');
    auto const b = add('b');
    auto const c = add('c');
    auto const d = add('d');
    a->pause();
    c->pause();
    for (auto const& job : {b, c}) { // c is resumed before its turn comes
        job->pause();
        job->resume();
    }
    b->pause();
    EXPECT_EQ("cd", runAll(*d));
    EXPECT_EQ("Waiting", a->getState()->state());
    EXPECT_TRUE(a->isPaused());
    EXPECT_EQ("", a->getStatistics().started());
    GatedJob next;
    manager.addUiJob(next.job, 1);
    next.started.wait();
    auto const e = add('e');
    for (auto const& job : {a, b}) // their turns have passed: in their own order, ahead of the later ones
        job->resume();
    next.gate.open();
    waitFor(*e);
    EXPECT_EQ("cdabe", executed);
}

TEST_F(BgManagerOrder, AStoppedJobIsNotPausedAnyMore) {
    auto const waiting = add('w');
    waiting->pause();
    waiting->stop();
    EXPECT_FALSE(waiting->isPaused());
    waiting->pause();
    EXPECT_FALSE(waiting->isPaused());
    EXPECT_EQ("l", runAll(*add('l')));
}

void BgManagerOrder::expectHeldUntil(EndOfHold const& row) {
    std::atomic<int> passed{0};
    Gate paused;
    GatedJob held([&](FunctionProtocol& self) {
        paused.wait();
        ++passed;
        EXPECT_EQ(row.goesOn, self.continueExecution());
        ++passed;
    });
    std::vector<bool> pauses;
    auto const followed =
        held.job->on<BgJobHintPause>([&](BgJobHintPause const& hint) { pauses.push_back(hint.isPaused()); });
    BgManager::getInstance().addJob(held.job);
    held.letGo();
    held.job->pause();
    EvEventManager::getInstance().processEvents();
    paused.open();
    while (passed == 0)
        std::this_thread::yield();
    for (int times = 0; times < 100; ++times) // the job would go on meanwhile
        std::this_thread::yield();
    EXPECT_EQ(1, passed);
    row.end(*held.job);
    waitFor(*held.job);
    EvEventManager::getInstance().processEvents();
    EXPECT_EQ((std::vector<bool>{true, false}), pauses);
    EXPECT_FALSE(held.job->isPaused());
    EXPECT_TRUE(held.job->releaseProtocol());
}

TEST_F(BgManagerOrder, ABusyJobIsHeldWhereItChecks) {
    for (EndOfHold const& row : {EndOfHold{"resume", [](BgJob& job) { job.resume(); }, true},
             EndOfHold{"stop", [](BgJob& job) { job.stop(); }, false},
             EndOfHold{"requestStop", [](BgJob& job) { job.requestStop(); }, false},
             EndOfHold{"release", [](BgJob& job) { EXPECT_TRUE(job.releaseProtocol()); }, false}}) {
        SCOPED_TRACE(row.name);
        expectHeldUntil(row);
    }
    auto const here =
        FunctionProtocol::createJob([](FunctionProtocol& self) { EXPECT_TRUE(self.continueExecution()); });
    JobRecorder pauser([&](ObHints const&) { here->pause(); });
    here->attachObserver(&pauser);
    here->execute(); // the application thread is never held
}

TEST_F(BgManagerOrder, AJobFollowsTheLastOfItsPredecessors) {
    auto const later = make('1');
    auto const early = add('2');
    auto const chain = addAfter('4', {early, later, early});
    auto const end = addAfter('5', {chain});
    EXPECT_EQ("Waiting", chain->getState()->state());
    EXPECT_EQ((Vector<RCShdPtr<BgJob>>{chain}), manager.getPredecessors(end));
    EXPECT_EQ(3u, manager.getPredecessors(chain).size());
    EXPECT_FALSE(manager.moveToFront(chain));
    EXPECT_EQ(5u, manager.getJobs().size());
    openOne();
    waitFor(*early);
    EXPECT_EQ((Vector<RCShdPtr<BgJob>>{later}), manager.getPredecessors(chain));
    manager.addJob(later);
    waitFor(*end);
    EXPECT_EQ("2145", executed);
    auto const after = addAfter('6', {end, early}); // which have ended
    waitFor(*after);
    EXPECT_EQ("21456", executed);
}

TEST_F(BgManagerOrder, AJobEndsWithItsPredecessorUnlessItRunsAllTheSame) {
    GatedJob failing([](FunctionProtocol&) { throw std::runtime_error("bad"); });
    struct Row {
        RCShdPtr<BgJob> predecessor;
        char const* state;
        char const* reason;
    };
    auto const stopped = make('s');
    for (Row const& row : {Row{failing.job, "Failed", "The job \"test job\" failed."},
             Row{stopped, "Stopped", "The job \"test job\" was stopped."}}) {
        Vector<RCShdPtr<BgJob>> chain{addAfter('x', {row.predecessor})};
        while (chain.size() < 2000) // ends without nesting
            chain.push_back(addAfter('x', {chain.back()}));
        auto const always = addAfter('r', {row.predecessor, chain.back()}, BgAfter::OnFailure::Run);
        if (row.predecessor == stopped)
            stopped->stop();
        else
            manager.addJob(failing.job), failing.letGo();
        waitFor(*chain.back());
        EXPECT_EQ(row.state, chain.front()->getState()->state());
        EXPECT_EQ(row.state, chain.back()->getState()->state());
        EXPECT_EQ(row.reason, chain.back()->getReason());
        EXPECT_EQ(nullptr, chain.back()->cloneError()) << "the user has been shown the failure already";
        openOne();
        waitFor(*always);
        EXPECT_TRUE(chain.back()->releaseProtocol());
    }
    EXPECT_EQ("rr", executed);
}

TEST_F(BgManagerOrder, RefusesCirclesAndListsNothingThen) {
    auto const a = make('a');
    auto const b = addAfter('b', {a});
    auto const c = addAfter('c', {b, b});
    for (auto const& last : {c, a}) {
        EXPECT_EQ("Background jobs: The job \"test job\" would wait for itself. [framework\\bgTask\\src\\bgOrder]",
            thrownBy<BgEx::ExBgManager>([&] { manager.addJob(a, {{last}}); }));
    }
    EXPECT_EQ("Background jobs: The job \"test job\" waits for other jobs already. [framework\\bgTask\\src\\bgOrder]",
        thrownBy<BgEx::ExBgManager>([&] { manager.addJob(c, {{make('x')}}); }));
    EXPECT_THROW(manager.addJob(a, {{nullptr}}), ExNullPtr);
    EXPECT_EQ(4u, manager.getJobs().size());
    c->stop(); // a waiting job can be stopped, and has no successor any more
    EXPECT_TRUE(manager.getPredecessors(c).empty());
    manager.addUiJob(a, 1);
    EXPECT_EQ("ab", runAll(*b));
}

/// Records the changes of the list, one word for each hint.
struct ListRecorder {
    explicit ListRecorder(BgFollow follow)
        : subscription(
              BgManager::getInstance().onJobs([this](BgManagerHintJobs const& hint) { record(hint); }, follow)) {}
    void record(BgManagerHintJobs const& hint) {
        for (BgJobChange const& change : hint.getChanges())
            recorded += change.kind == BgJobChange::Kind::Added     ? '+'
                        : change.kind == BgJobChange::Kind::Removed ? '-'
                                                                    : '*';
        recorded += ' ';
    }
    std::string take() {
        EvEventManager::getInstance().processEvents();
        return std::exchange(recorded, {});
    }
    std::string recorded;
    ObSubscription subscription;
};

TEST_F(BgManagerOrder, TellsListsOfEachRoundOnce) {
    ListRecorder jobs(BgFollow::Jobs), all(BgFollow::JobsAndUiJobs);
    auto const uiJob = add('u');
    auto const job = make('j');
    auto const gone = make('g');
    for (auto const& paused : {job, gone}) {
        paused->pause(); // they do not change by themselves
        manager.addJob(paused);
    }
    manager.stopAndDeleteJob(gone);
    EXPECT_EQ("+ ", jobs.take());
    EXPECT_EQ("++ ", all.take());
    EXPECT_TRUE(job->releaseProtocol());
    jobs.take();
    all.take();
    uiJob->pause();
    uiJob->requestStop();
    blockers[0].job->requestStop(); // was listed before
    EXPECT_EQ("** ", all.take());
    openAll();
    manager.stopAllJobs();
    EXPECT_EQ("- ", jobs.take());
    EXPECT_EQ("---- ", all.take()) << "a stop of several";
}

// Its `stop()` waits until the test lets it go.
struct SlowToStop : FunctionProtocol {
    SlowToStop(Gate& itsGate, Function work) : FunctionProtocol(std::move(work)), gate(itsGate) {}
    void stop() override {
        FunctionProtocol::stop();
        gate.wait();
    }
    Gate& gate;
};

TEST_F(BgManagerOrder, AsksAllToStopAndNamesThoseThatDoNot) {
    LogRecorder const log;
    openAll();
    Gate slow;
    Gate ignoring;
    std::vector<RCShdPtr<BgJob>> ending{manager.addJob(std::make_unique<SlowToStop>(slow, [](FunctionProtocol& self) {
        while (self.continueExecution())
            std::this_thread::yield();
    }))};
    while (ending.size() < 20)
        ending.push_back(manager.addUiJob(FunctionProtocol::create(), ending.size() % 2));
    auto const stuck = manager.addJob(FunctionProtocol::create([&](FunctionProtocol&) { ignoring.wait(); }));
    while (ending.front()->getState() != &BgJobBusy::getInstance() || stuck->getState() != &BgJobBusy::getInstance())
        std::this_thread::yield();
    Vector<RCShdPtr<BgJob>> unended;
    bool isDone = false;
    manager.stopAllJobs(std::chrono::milliseconds(200), [&](Vector<RCShdPtr<BgJob>> const& jobs) {
        unended = jobs;
        isDone = true;
    });
    slow.open(); // the stop of the first one waits for this
    while (!isDone)
        EvEventManager::getInstance().processEvents();
    EXPECT_EQ((Vector<RCShdPtr<BgJob>>{stuck}), unended);
    EXPECT_EQ((List<RCShdPtr<BgJob>>{stuck}), manager.getJobs());
    EXPECT_THAT(
        log.lines(), testing::Contains(testing::HasSubstr("\"test job\" (test) did not end in its grace period")));
    for (auto const& job : ending)
        EXPECT_TRUE(job->isReleased());
    ignoring.open();
    isDone = false;
    manager.stopAllJobs(std::chrono::hours(1), [&](Vector<RCShdPtr<BgJob>> const& jobs) { isDone = jobs.empty(); });
    while (!isDone)
        EvEventManager::getInstance().processEvents();
    EXPECT_TRUE(manager.getJobs().empty());
}

} // namespace
