#include "framework/bgTask/bgManager.h"

#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgEx.h"
#include "resmgt/msgServer.h"
#include "tests/support/childProcess.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/thrown.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace Ko {

// The error of another library that the manager knows by name.
struct CtServerEx {
    class ExNotEnoughSpace : public ExBase {
    public:
        ExNotEnoughSpace() : ExBase("ctServer", 1, "the server is full") {}
        ExBase* clone() const override { return copyOf(*this); }
        [[noreturn]] void raise() const override { throw *this; }
    };
};

} // namespace Ko

namespace {

using namespace Ko;
using namespace KoTest;

/// Records what the manager tells: "new", "delete", "space" and "update", in the order of the hints; only on this thread.
class ManagerRecorder : public ObObserver<BgManagerTag> {
public:
    ManagerRecorder() {
        EvEventManager::getInstance().processEvents();
        BgManager::getInstance().attachObserver(this);
    }

    std::string take() { return std::exchange(_told, {}); }

private:
    void update(ObObserver const*, ObHints const& hints) override {
        EXPECT_TRUE(InInitMgr::isApplicationThread());
        for (std::size_t index = 0; index < hints.size(); ++index)
            _told += hints[index].dynamicCast<BgManagerHintNew>()              ? "new "
                     : hints[index].dynamicCast<BgManagerHintDelete>()         ? "delete "
                     : hints[index].dynamicCast<BgManagerNotEnoughSpaceHint>() ? "space "
                                                                               : "update ";
    }

    std::string _told;
};

class BgManagerTest : public testing::Test {
protected:
    ~BgManagerTest() override { manager.stopAllJobs(); }

    static void waitFor(RCShdPtr<BgJob> const& job) {
        while (job->isRunning())
            std::this_thread::yield();
        job->releaseProtocol(); // its worker has told of the end then
        EvEventManager::getInstance().processEvents();
    }

    BgManager& manager = BgManager::getInstance();
    ManagerRecorder told;
};

TEST_F(BgManagerTest, FollowsJobsButNotThoseOfTheUserInterface) {
    auto const job = manager.addJob(FunctionProtocol::create());
    EXPECT_EQ("new ", told.take());
    auto const uiJob = manager.addUiJob(FunctionProtocol::create(), 1);
    EXPECT_EQ((List<RCShdPtr<BgJob>>{job, uiJob}), manager.getJobs());
    waitFor(uiJob);
    waitFor(job);
    manager.stopAndDeleteJob(uiJob);
    EXPECT_EQ("update update delete ", told.take()) << "busy, complete, and the deletion";
    manager.stopAndDeleteJob(job);
    EXPECT_EQ("delete ", told.take());
    EXPECT_TRUE(manager.getJobs().empty());
}

TEST_F(BgManagerTest, ShowsAFailureOnceAndTellsOfASpaceThatIsFull) {
    Vector<LiString> shown;
    MsgProtocol::setHandler([&](Msg const& message) {
        EXPECT_TRUE(InInitMgr::isApplicationThread());
        shown.push_back(message.getText());
    });
    auto const run = [&](FunctionProtocol::Function work) {
        waitFor(manager.addJob(FunctionProtocol::create(std::move(work))));
        return told.take();
    };
    EXPECT_EQ("new update update ", run([](FunctionProtocol&) { throw BgEx::ExBgTaskFailed("file", 1, "disk full"); }));
    EXPECT_EQ("new update space update ", run([](FunctionProtocol&) { throw CtServerEx::ExNotEnoughSpace(); }));
    EXPECT_EQ("new update update ", run([](FunctionProtocol&) { throw std::runtime_error("unknown"); }));
    EXPECT_EQ("new update update update ", run([](FunctionProtocol& self) { self.reportProgress(1, 1); }));
    EXPECT_EQ((Vector<LiString>{"A background job failed: disk full", "the server is full"}), shown);
    MsgProtocol::setHandler(nullptr);
}

TEST_F(BgManagerTest, HasSixGeneralWorkersAndTwoForEachPriority) {
    struct Row {
        int workers;
        std::function<void(RCShdPtr<BgJob>)> add;
    };
    std::array<GatedJob, 10> jobs;
    std::size_t busy = 0;
    std::vector<RCShdPtr<BgJob>> waiting;
    // All groups are filled at once: none lends workers to another.
    for (Row const& row :
        {Row{6, [this](auto job) { manager.addJob(job); }}, Row{2, [this](auto job) { manager.addUiJob(job, 0); }},
            Row{0, [this](auto job) { manager.addUiJob(job, 7); }}, // any other priority is a low one
            Row{2, [this](auto job) { manager.addUiJob(job, 1); }}}) {
        for (int worker = 0; worker < row.workers; ++worker)
            row.add(jobs[busy++].job);
        for (std::size_t job = 0; job < busy; ++job)
            jobs[job].started.wait();
        row.add(waiting.emplace_back(FunctionProtocol::createJob()));
    }
    for (auto const& job : waiting)
        EXPECT_EQ("Waiting", job->getState()->state());
    for (GatedJob& job : jobs)
        job.letGo();
    for (auto const& job : waiting)
        waitFor(job);
    manager.stopAllJobs(); // before what they use goes
}

TEST_F(BgManagerTest, DeletesAWaitingJobAtOnce) {
    std::array<GatedJob, 2> busy;
    for (GatedJob& job : busy) {
        manager.addUiJob(job.job, 0);
        job.started.wait();
    }
    auto const waiting = manager.addUiJob(FunctionProtocol::create([](FunctionProtocol&) { ADD_FAILURE(); }), 0);
    auto const behind = manager.addUiJob(FunctionProtocol::create(), 0);
    told.take();
    manager.stopAndDeleteJob(waiting);
    EXPECT_EQ("delete ", told.take());
    EXPECT_EQ("Stopped", waiting->getState()->state());
    EXPECT_EQ(3u, manager.getJobs().size());
    for (GatedJob& job : busy)
        job.letGo();
    waitFor(behind);
    manager.stopAllJobs(); // before what they use goes
}

TEST_F(BgManagerTest, KeepsAJobThatDoesNotEnd) {
    GatedJob busy;
    manager.addJob(busy.job);
    busy.started.wait();
    EXPECT_EQ("Background jobs: Unable to stop and delete this background job. [framework\\bgTask\\src\\bgManager:319]",
        thrownBy<BgEx::ExBgManager>([&] { manager.stopAndDeleteJob(busy.job); }, true));
    EXPECT_FALSE(busy.job->isReleased());
    EXPECT_EQ((List<RCShdPtr<BgJob>>{busy.job}), manager.getJobs());
    busy.letGo();
    manager.stopAndDeleteJob(busy.job);
    EXPECT_TRUE(manager.getJobs().empty());
}

TEST_F(BgManagerTest, StopsAllJobsTogether) {
    // None of the first six ends before all of them have been asked to.
    std::latch running(6), asked(6);
    std::atomic<int> begun{0};
    for (int job = 0; job < 100; ++job)
        manager.addJob(FunctionProtocol::create([&](FunctionProtocol& self) {
            bool const isFirst = ++begun <= 6;
            if (isFirst) running.count_down();
            while (self.continueExecution())
                std::this_thread::yield();
            if (isFirst) asked.arrive_and_wait();
        }));
    running.wait();
    auto const jobs = manager.getJobs();
    told.take();
    manager.stopAllJobs();
    EXPECT_TRUE(manager.getJobs().empty());
    for (auto const& job : jobs)
        EXPECT_EQ("Stopped", job->getState()->state());
    EXPECT_EQ("", told.take());
}

TEST_F(BgManagerTest, RefusesNullPointers) {
    EXPECT_THROW(manager.addJob(RCShdPtr<BgJob>()), ExNullPtr);
    EXPECT_THROW(manager.addJob(OPtr<BgJobProtocol>()), ExNullPtr);
    EXPECT_THROW(manager.addUiJob(RCShdPtr<BgJob>(), 1), ExNullPtr);
    EXPECT_THROW(manager.stopAndDeleteJob(nullptr), ExNullPtr);
    EXPECT_TRUE(manager.getJobs().empty());
}

TEST(BgTaskLifetime, StopsJobsAtTheEndWhoeverStillHoldsThem) {
    RCShdPtr<BgJob> kept;
    std::atomic<int> ended{0};
    inChildProcess([&] {
        Gate started;
        kept = BgManager::getInstance().addJob(FunctionProtocol::create([&](FunctionProtocol& self) {
            started.open();
            while (self.continueExecution())
                std::this_thread::yield();
            ++ended;
        }));
        for (int job = 0; job < 1000; ++job)
            BgManager::getInstance().addUiJob(FunctionProtocol::create(), 0);
        started.wait();
        InInitMgr::finalize();
        EXPECT_EQ(1, ended);
        EXPECT_TRUE(kept->isReleased());
        EXPECT_THROW(BgManager::getInstance(), InSingletonEx::ExNotInitialized);
        EXPECT_THROW(FunctionProtocol::createJob(), InSingletonEx::ExNotInitialized);
    });
}

TEST(BgTaskLifetime, DoesNotEndTheManagerWhileItListsJobs) {
    inChildProcess([] {
        BgManager::getInstance().addJob(FunctionProtocol::create());
        EXPECT_EQ("_jobs.empty() [framework\\bgTask\\src\\bgManager:220]",
            thrownBy([] { BgManager::performFinalize(); }, true));
        BgManager::getInstance().stopAllJobs();
        BgManager::performFinalize();
        BgManager::performFinalize();
        EXPECT_FALSE(BgManager::isInitialized());
    });
}

} // namespace
