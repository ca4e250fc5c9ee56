#include "base/evEventManager.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/lkEvent.h"
#include "resmgt/msgServer.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/functionProtocol.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

/// Counts the notifications of the manager.
class ManagerCounter : public ObObserver<BgManagerTag> {
public:
    ManagerCounter() { BgManager::getInstance().attachObserver(this); }

    int added = 0;
    int deleted = 0;
    int updated = 0;

private:
    void update(ObObserver const*, ObHints const& hints) override {
        added += hints.pickHint<BgManagerHintNew>() ? 1 : 0;
        deleted += hints.pickHint<BgManagerHintDelete>() ? 1 : 0;
        updated += hints.pickHint<BgManagerUpdateHint>() ? 1 : 0;
    }
};

class JobFaults : public FaultsTest {
protected:
    // Creates the shared places where threads wait, which would otherwise happen at the first wait, at any time.
    JobFaults() { LkEvent("Never set", false).wait(0.0); }
    ~JobFaults() override { MsgProtocol::setHandler(nullptr); }

    bool isListed(RCShdPtr<BgJob> const& job) {
        auto const jobs = manager.getJobs();
        return std::find(jobs.begin(), jobs.end(), job) != jobs.end();
    }
    // Ends the job and waits until only the test holds a reference.
    void finish(RCShdPtr<BgJob> const& job) {
        if (isListed(job)) manager.stopAndDeleteJob(job);
        EXPECT_FALSE(isListed(job));
        EXPECT_TRUE(job->releaseProtocol());
        EvEventManager::getInstance().processEvents();
        waitUntil([&] { return job->getReferenceCount() == 1; });
    }

    static void letEnd(GatedJob& one) {
        one.letGo();
        waitUntil([&] { return !one.job->isRunning(); });
    }

    struct Ending {
        char const* name;
        std::string state;
        FunctionProtocol::Function work;
    };

    void submit(GatedJob& one, bool isUi) { isUi ? manager.addUiJob(one.job, 0) : manager.addJob(one.job); }
    void tryEnding(Ending const& ending, bool isUi, FaultyAttempt& attempt) {
        GatedJob one(ending.work);
        JobRecorder observer;
        one.job->attachObserver(&observer);
        submit(one, isUi);
        one.started.wait();
        attempt([&] {
            one.gate.open();
            if (ending.state == "Stopped") one.job->stop();
            waitUntil([&] { return !one.job->isRunning(); });
        });
        // Its last notification precedes the release of the protocol.
        EXPECT_TRUE(one.job->releaseProtocol());
        attempt.end();
        EXPECT_EQ(ending.state, one.job->getState()->state());
        finish(one.job);
        GatedJob next;
        submit(next, isUi);
        letEnd(next);
        finish(next.job);
    }

    BgManager& manager = BgManager::getInstance();
};

TEST_F(JobFaults, AJobIsSubmittedAndListedOrNeither) {
    MsgProtocol::setHandler([](Msg const&) {});
    for (int const priority : {-1, 0, 1})
        for (int count = 0; count < 40; count += 39) // the second one when the queue allocates another block
            tryAllFaults("addJob", [&](FaultyAttempt& attempt) {
                ManagerCounter hints;
                GatedJob one;
                auto const add = [&] {
                    priority < 0 ? manager.addJob(one.job) : manager.addUiJob(one.job, static_cast<unsigned>(priority));
                };
                for (int other = 0; other < count; ++other)
                    finish(manager.addJob(FunctionProtocol::create()));
                hints.added = 0;
                bool const isDone = attempt(add);
                EXPECT_EQ(isDone, isListed(one.job));
                EXPECT_EQ(isDone && priority < 0 ? 1 : 0, hints.added);
                if (!isDone) add();
                letEnd(one);
                EXPECT_EQ("Complete", one.job->getState()->state());
                finish(one.job);
            });
}

TEST_F(JobFaults, AJobThatCannotBeSubmittedAgainStaysAsItIs) {
    tryAllFaults("addJob once more", [&](FaultyAttempt& attempt) {
        ManagerCounter hints;
        GatedJob one;
        manager.addJob(one.job);
        bool const isDone = attempt([&] { manager.addJob(one.job); });
        EXPECT_EQ(isDone ? 2u : 1u, manager.getJobs().size());
        letEnd(one);
        EXPECT_TRUE(one.job->releaseProtocol());
        hints.updated = 0;
        EvEventManager::getInstance().processEvents();
        EXPECT_GT(hints.updated, 0) << "the manager observes it";
        finish(one.job);
        EXPECT_EQ(1, hints.deleted);
    });
}

TEST_F(JobFaults, AJobWaitsForAnotherOrIsNotSubmitted) {
    tryAllFaults("addJob after another", [&](FaultyAttempt& attempt) {
        GatedJob first;
        manager.addUiJob(first.job, 1);
        auto const next = FunctionProtocol::createJob();
        bool const isDone = attempt([&] { manager.addJob(next, {{first.job}}); });
        EXPECT_EQ(isDone, isListed(next));
        if (!isDone) manager.addJob(next, {{first.job}});
        letEnd(first);
        waitUntil([&] { return !next->isRunning(); });
        EXPECT_EQ("Complete", next->getState()->state());
        finish(next);
        finish(first.job);
    });
}

TEST_F(JobFaults, AJobIsPausedAndFollowedOrNot) {
    tryAllFaults("pause", [&](FaultyAttempt& attempt) {
        auto const job = FunctionProtocol::createJob();
        JobRecorder observer;
        job->attachObserver(&observer);
        bool const isDone = attempt([&] { job->pause(); });
        EXPECT_EQ(isDone, job->isPaused());
        job->execute();
        EXPECT_EQ(isDone, job->isRunning());
        EvEventManager::getInstance().processEvents();
    });
    tryAllFaults("onEnd", [&](FaultyAttempt& attempt) {
        int ends = 0;
        auto const job = FunctionProtocol::createJob();
        ObSubscription end;
        bool const isDone = attempt([&] { end = job->onEnd([&](BgJob&) { ++ends; }); });
        job->execute();
        EvEventManager::getInstance().processEvents();
        EXPECT_EQ(isDone ? 1 : 0, ends);
    });
}

TEST_F(JobFaults, AProtocolThatIsNotSubmittedIsDestroyed) {
    for (bool const isUi : {false, true})
        tryAllFaults("addJob of a protocol", [&](FaultyAttempt& attempt) {
            auto const owned = std::make_shared<int>(0);
            RCShdPtr<BgJob> job;
            auto protocol = FunctionProtocol::create([owned](FunctionProtocol&) {});
            attempt(
                [&] { job = isUi ? manager.addUiJob(std::move(protocol), 1) : manager.addJob(std::move(protocol)); });
            if (job) finish(job);
            EXPECT_EQ(1, owned.use_count());
            EXPECT_TRUE(manager.getJobs().empty());
        });
}

TEST_F(JobFaults, AJobIsDeletedOrKept) {
    for (bool const isBusy : {false, true})
        tryAllFaults("stopAndDeleteJob", [&](FaultyAttempt& attempt) {
            ManagerCounter hints;
            std::array<GatedJob, 2> blocking;
            for (GatedJob const& job : blocking) {
                manager.addUiJob(job.job, 1);
                job.started.wait();
            }
            GatedJob one;
            isBusy ? manager.addJob(one.job) : manager.addUiJob(one.job, 1);
            if (isBusy) one.letGo();
            bool const isDone = attempt([&] { manager.stopAndDeleteJob(one.job); });
            EXPECT_EQ(isDone, !isListed(one.job));
            EXPECT_EQ(isDone ? 1 : 0, hints.deleted);
            EXPECT_EQ(isDone, one.job->isReleased());
            for (GatedJob* const job : {&one, &blocking[0], &blocking[1]})
                job->gate.open();
            for (GatedJob const* const job : {&one, &blocking[0], &blocking[1]})
                finish(job->job);
            EXPECT_EQ(3, hints.deleted);
        });
}

TEST_F(JobFaults, AllJobsStopWithoutMemory) {
    tryAllFaults("stopAllJobs", [&](FaultyAttempt& attempt) {
        GatedJob busy([](FunctionProtocol& self) { waitUntil([&] { return !self.continueExecution(); }); });
        GatedJob ended;
        manager.addJob(busy.job);
        manager.addUiJob(ended.job, 1);
        busy.letGo();
        ended.letGo();
        attempt.withoutFail([&] { manager.stopAllJobs(); });
        EXPECT_TRUE(manager.getJobs().empty());
        finish(busy.job);
        finish(ended.job);
    });
}

TEST_F(JobFaults, AnObserverIsAttachedOrNotAndDetachesWithoutMemory) {
    for (bool const detaches : {false, true})
        tryAllFaults(detaches ? "detachObserver" : "attachObserver", [=](FaultyAttempt& attempt) {
            auto const job = FunctionProtocol::createJob();
            JobRecorder recorder;
            if (detaches) job->attachObserver(&recorder);
            bool const isDone =
                attempt([&] { detaches ? job->detachObserver(&recorder) : job->attachObserver(&recorder); });
            job->execute();
            EXPECT_EQ(isDone && !detaches ? 2u : 0u, recorder.states().size());
        });
}

// Also when a notification fails, the job ends in its proper state and its worker goes on.
TEST_F(JobFaults, AJobEndsWithoutMemoryOnItsWorker) {
    MsgProtocol::setHandler([](Msg const&) {});
    Ending const endings[] = {{"complete", "Complete",
                                  [](FunctionProtocol& self) {
                                      self.reportProgress(1, 2);
                                      self.reportProgress(2, 2);
                                  }},
        {"report", "Complete",
            [](FunctionProtocol& self) {
                self.reportPhase("a phase with a rather long name");
                self.reportUnits(1, 2, "units");
                self.reportMessage(BgMessage::Severity::Warning, "a message with a rather long text");
            }},
        {"fail", "Failed",
            [](FunctionProtocol&) { throw BgEx::ExBgTaskFailed("a file with a rather long name", 1, "reason"); }},
        {"fail for another reason", "Failed", [](FunctionProtocol&) { throw std::bad_alloc(); }},
        {"stop", "Stopped", [](FunctionProtocol& self) { waitUntil([&] { return !self.continueExecution(); }); }}};
    for (Ending const& ending : endings)
        for (bool const isUi : {false, true})
            tryAllFaults(
                std::string("a job's work: ") + ending.name,
                [&](FaultyAttempt& attempt) { tryEnding(ending, isUi, attempt); }, true);
}

// More events in each attempt, so that taking them allocates memory.
TEST_F(JobFaults, AnInnerLoopThatRunsOutOfMemoryWakesTheHost) {
    auto& events = EvEventManager::getInstance();
    int amount = 16;
    tryAllFaults("processEvents within an event", [&](FaultyAttempt& attempt) {
        amount *= 2;
        int processed = 0;
        bool isAwake = false;
        bool isDone = false;
        events.postRequest([&] {
            for (int event = 0; event < amount; ++event)
                events.postRequest([&] { ++processed; });
            isAwake = false;
            isDone = attempt([&] { events.processEvents(); });
        });
        events.setWakeUpHandler([&] { isAwake = true; });
        events.processEvents();
        EXPECT_TRUE(isDone || isAwake) << "the host would wait for ever";
        events.processEvents();
        EXPECT_EQ(amount, processed);
        events.setWakeUpHandler({});
    });
}

} // namespace
