#include "framework/bgTask/bgManager.h"

#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgEx.h"
#include "resmgt/msgServer.h"
#include "tests/support/childProcess.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/logRecorder.h"
#include "tests/support/thrown.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace Ko {

// An error of another library, which the manager recognises by its name.
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

/// Records the hints of the manager in their order: "new", "delete", "space" and "update".
class ManagerRecorder : public ObObserver<BgManagerTag> {
public:
    ManagerRecorder() {
        EvEventManager::getInstance().processEvents();
        BgManager::getInstance().attachObserver(this);
    }

    std::string take() { return std::exchange(_recorded, {}); }

private:
    void update(ObObserver const*, ObHints const& received) override {
        EXPECT_TRUE(InInitMgr::isApplicationThread());
        for (std::size_t index = 0; index < received.size(); ++index)
            _recorded += received[index].dynamicCast<BgManagerHintNew>()              ? "new "
                         : received[index].dynamicCast<BgManagerHintDelete>()         ? "delete "
                         : received[index].dynamicCast<BgManagerNotEnoughSpaceHint>() ? "space "
                                                                                      : "update ";
    }

    std::string _recorded;
};

class BgManagerTest : public testing::Test {
protected:
    ~BgManagerTest() override { manager.stopAllJobs(); }

    static void waitFor(RCShdPtr<BgJob> const& job) {
        while (job->isRunning())
            std::this_thread::yield();
        job->releaseProtocol(); // after this, its worker has posted the last notification
        EvEventManager::getInstance().processEvents();
    }

    BgManager& manager = BgManager::getInstance();
    ManagerRecorder hints;
};

TEST_F(BgManagerTest, ObservesJobsButNotUserInterfaceJobs) {
    auto const job = manager.addJob(FunctionProtocol::create());
    EXPECT_EQ("new ", hints.take());
    auto const uiJob = manager.addUiJob(FunctionProtocol::create(), 1);
    EXPECT_EQ((List<RCShdPtr<BgJob>>{job, uiJob}), manager.getJobs());
    EXPECT_TRUE(manager.isUiJob(*uiJob) && !manager.isUiJob(*job) && !manager.isUiJob(*FunctionProtocol::createJob()));
    waitFor(uiJob);
    waitFor(job);
    manager.stopAndDeleteJob(uiJob);
    EXPECT_EQ("update update delete ", hints.take()) << "busy, complete, and the deletion";
    manager.stopAndDeleteJob(job);
    EXPECT_EQ("delete ", hints.take());
    EXPECT_TRUE(manager.getJobs().empty());
}

TEST_F(BgManagerTest, ShowsAFailureOnceAndNotifiesOfMissingSpace) {
    Vector<LiString> shown;
    MsgProtocol::setHandler([&](Msg const& message) {
        EXPECT_TRUE(InInitMgr::isApplicationThread());
        shown.push_back(message.getText());
    });
    auto const run = [&](FunctionProtocol::Function work) {
        waitFor(manager.addJob(FunctionProtocol::create(std::move(work))));
        return hints.take();
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
    // All groups are full at the same time: no job runs in another group.
    for (Row const& row :
        {Row{6, [this](auto job) { manager.addJob(job); }}, Row{2, [this](auto job) { manager.addUiJob(job, 0); }},
            Row{0, [this](auto job) { manager.addUiJob(job, 7); }}, // other priorities mean low
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
    manager.stopAllJobs(); // before the locals that the jobs use are destroyed
}

TEST_F(BgManagerTest, DeletesAWaitingJobAtOnce) {
    std::array<GatedJob, 2> busy;
    for (GatedJob& job : busy) {
        manager.addUiJob(job.job, 0);
        job.started.wait();
    }
    auto const waiting = manager.addUiJob(FunctionProtocol::create([](FunctionProtocol&) { ADD_FAILURE(); }), 0);
    auto const behind = manager.addUiJob(FunctionProtocol::create(), 0);
    hints.take();
    manager.stopAndDeleteJob(waiting);
    EXPECT_EQ("delete ", hints.take());
    EXPECT_EQ("Stopped", waiting->getState()->state());
    EXPECT_EQ(3u, manager.getJobs().size());
    for (GatedJob& job : busy)
        job.letGo();
    waitFor(behind);
    manager.stopAllJobs(); // before the locals that the jobs use are destroyed
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
    // None of the first six jobs ends before all of them were asked to end.
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
    hints.take();
    manager.stopAllJobs();
    EXPECT_TRUE(manager.getJobs().empty());
    for (auto const& job : jobs)
        EXPECT_EQ("Stopped", job->getState()->state());
    EXPECT_EQ("", hints.take());
}

// Calls a function of the test when it is stopped.
struct Stopped : FunctionProtocol {
    explicit Stopped(std::function<void()> itsThen)
        : FunctionProtocol([](FunctionProtocol& self) {
              while (self.continueExecution())
                  std::this_thread::yield();
          }),
          then(std::move(itsThen)) {}
    void stop() override {
        FunctionProtocol::stop();
        then();
    }
    std::function<void()> const then;
};

TEST_F(BgManagerTest, StopsAllJobsWhateverTheirProtocolsDoInStop) {
    LogRecorder const log;
    for (bool const together : {true, false}) {
        RCShdPtr<BgJob> second;
        bool isFirstStop = true;
        auto const first = manager.addJob(std::make_unique<Stopped>([&] {
            // Changes the list during the iteration.
            if (together && std::exchange(isFirstStop, false)) {
                manager.stopAndDeleteJob(second);
                manager.addUiJob(FunctionProtocol::create(), 1);
            }
            throw std::runtime_error("stop failed");
        }));
        second = manager.addJob(std::make_unique<Stopped>([] { throw 5; }));
        auto const third = manager.addJob(std::make_unique<Stopped>([] {}));
        for (auto const& job : {first, second, third})
            while (job->getState() == &BgJobWaiting::getInstance())
                std::this_thread::yield();
        if (!together) manager.stopAndDeleteJob(first);
        manager.stopAllJobs();
        for (auto const& job : {first, second, third}) {
            EXPECT_EQ("Stopped", job->getState()->state());
            EXPECT_TRUE(job->isReleased());
        }
        EXPECT_TRUE(manager.getJobs().empty());
    }
    // Each protocol is stopped twice: by the state of the job, and for the release.
    EXPECT_EQ(8u, log.lines().size());
    EXPECT_EQ(4, std::ranges::count(log.lines(), "Errors:0 Stopping a job failed: stop failed"));
}

TEST_F(BgManagerTest, RefusesNullPointers) {
    EXPECT_THROW(manager.addJob(RCShdPtr<BgJob>()), ExNullPtr);
    EXPECT_THROW(manager.addJob(OPtr<BgJobProtocol>()), ExNullPtr);
    EXPECT_THROW(manager.addUiJob(RCShdPtr<BgJob>(), 1), ExNullPtr);
    EXPECT_THROW(manager.stopAndDeleteJob(nullptr), ExNullPtr);
    EXPECT_TRUE(manager.getJobs().empty());
}

TEST(BgTaskLifetime, StopsJobsAtTheEndAlsoIfTheHostHoldsReferences) {
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

TEST(BgTaskLifetime, NamesTheJobsThatDoNotEnd) {
    struct Sink : LgSink {
        explicit Sink(Gate& itsGate) : gate(itsGate) {}
        void write(LgRecord const& record) override {
            lines.push_back(record.minor + " " + record.text);
            if (record.text.starts_with("Waiting")) gate.open();
        }
        Gate& gate;
        std::vector<std::string> lines;
    };
    inChildProcess(
        [] {
            std::array<GatedJob, 2> jobs; // neither ends; the manager waits for both together
            for (GatedJob const& job : jobs) {
                BgManager::getInstance().addJob(job.job);
                job.started.wait();
            }
            BgManager::getInstance().stopAllJobs();
            EXPECT_TRUE(BgManager::getInstance().getJobs().empty());
            auto const sink = std::make_shared<Sink>(jobs[0].gate);
            LgSinks::replace({sink});
            jobs[1].letGo();
            EXPECT_TRUE(jobs[1].job->releaseProtocol());
            InInitMgr::finalize();
            LgSinks::replace({});
            EXPECT_EQ((std::vector<std::string>{
                          "BgTask Waiting for the background job \"test job\" (test), which does not end."}),
                sink->lines);
        },
        "BgTask.*The background job \"test job\" \\(test\\) did not end within 5 seconds after it was stopped");
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
