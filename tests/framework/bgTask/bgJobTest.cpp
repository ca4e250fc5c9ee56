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

TEST(BgJobProtocol, StoresTheLastQuotientAndForwardsReports) {
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

TEST(BgJobProtocol, StaysStoppedUntilTheNextStart) {
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

TEST(BgJob, HonoursAStopOfItsProtocolOnlyFromBusyOn) {
    for (bool const isBusy : {false, true}) {
        bool goesOn = isBusy;
        auto owned = FunctionProtocol::create([&](FunctionProtocol& self) { goesOn = self.continueExecution(); });
        FunctionProtocol& protocol = *owned;
        auto const job = BgJob::create(std::move(owned));
        JobRecorder observer([&](ObHints const&) {
            if (isBusy) protocol.stop();
        });
        job->attachObserver(&observer);
        if (!isBusy) protocol.stop();
        job->execute();
        EXPECT_EQ(!isBusy, goesOn);
    }
}

// Every path through the states, as observers are notified of it.
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
    for (int times = 0; times < 2; ++times) { // an ended job keeps its state, also when it is released
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
                EXPECT_NE("", job.getStatistics().started()) << "set when a worker takes the job";
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

TEST(BgJob, KeepsACopyOfAnExBase) {
    auto const failed =
        FunctionProtocol::createJob([](FunctionProtocol&) { throw BgEx::ExBgTaskFailed("file", 7, "no space"); });
    EXPECT_EQ(nullptr, failed->cloneError());
    failed->execute();
    auto const error = failed->cloneError();
    ASSERT_NE(nullptr, error);
    EXPECT_NE(nullptr, failed->cloneError());
    EXPECT_EQ("A background job failed: no space", error->getReason());

    // The copy is made without a lock of the job.
    struct Curious : ExBase {
        explicit Curious(BgJob& itsJob) : ExBase("file", 1, "curious"), job(itsJob) {}
        ExBase* clone() const override {
            EXPECT_FALSE(job.isReleased());
            return copyOf(*this);
        }
        [[noreturn]] void raise() const override { throw *this; }
        BgJob& job;
    };
    BgJob* thrower = nullptr;
    auto const curious = FunctionProtocol::createJob([&](FunctionProtocol&) { throw Curious(*thrower); });
    thrower = curious.get();
    curious->execute();
    EXPECT_EQ("curious", curious->cloneError()->getReason());

    auto const strange = FunctionProtocol::createJob([](FunctionProtocol&) { throw std::runtime_error("x"); });
    strange->execute();
    EXPECT_EQ(nullptr, strange->cloneError());
}

std::vector<float> notificationsOf(std::vector<std::pair<int, int>> const& reports, float slice = 0.05f) {
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

TEST(BgJob, NotifiesOfProgressBySlices) {
    int const most = std::numeric_limits<int>::max();
    struct Row {
        char const* name;
        std::vector<std::pair<int, int>> reports;
        float slice;
        std::vector<float> notified;
    };
    for (Row const& row : {Row{"forwards", {{1, 100}, {4, 100}, {5, 100}, {9, 100}, {11, 100}}, 0.05f, {0.05f, 0.11f}},
             Row{"backwards", {{50, 100}, {49, 100}, {51, 100}}, 0.05f, {0.5f, 0.49f}},
             Row{"always at the end", {{98, 100}, {100, 100}, {100, 100}}, 0.05f, {0.98f, 1.0f}},
             Row{"limited", {{150, 100}, {-3, 100}}, 0.05f, {1.0f, 0.0f}},
             Row{"unknown", {{0, 0}, {1, 2}, {0, 0}, {1, 1}}, 0.05f, {0.5f, 1.0f}},
             Row{"infinite", {{1, 0}, {-1, 0}}, 0.05f, {1.0f, 0.0f}},
             Row{"extreme", {{most, 1}, {1, most}}, 0.05f, {1.0f, 1.0f / 2147483648.0f}},
             Row{"every rise", {{1, 1000}, {1, 1000}, {2, 1000}}, 0.0f, {0.001f, 0.001f, 0.002f}},
             Row{"only at the end", {{1, 2}, {99, 100}, {1, 1}}, 1.0f, {1.0f}},
             Row{"above 1", {{4, 100}, {5, 100}}, 1.5f, {0.05f}}, Row{"below 0", {{4, 100}, {5, 100}}, -0.1f, {0.05f}},
             Row{"NaN as slice", {{4, 100}, {5, 100}}, std::nanf(""), {0.05f}}})
        EXPECT_EQ(row.notified, notificationsOf(row.reports, row.slice)) << row.name;
}

TEST(BgJob, RecordsItsTimes) {
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
            EXPECT_EQ("", after.ended()) << "complete with less progress than 1";
        }
        EXPECT_EQ(static_cast<float>(done) / 2, after.progress());
        while (LiDateFormat::format(LiDate(), 1) == after.started())
            std::this_thread::yield(); // until the clock shows another second
        job->execute();
        EXPECT_EQ(after.started(), job->getStatistics().started()) << "a second execution changes nothing";
        EXPECT_EQ(after.ended(), job->getStatistics().ended());
        job->releaseProtocol();
        EXPECT_EQ(after.progress(), job->getStatistics().progress()) << "after the release";
    }
}

TEST(BgJob, NotifiesAllObserversInTheSameOrder) {
    LogRecorder const log;
    auto const job = FunctionProtocol::createJob([](FunctionProtocol& self) { self.reportProgress(1, 1); });
    JobRecorder stopper([&](ObHints const& hints) {
        auto const change = hints.pickHint<BgJobHintChangeState>();
        if (change && change->getJobState() == State::Busy) job->stop();
    });
    JobRecorder thrower([](ObHints const&) { throw std::runtime_error("observer failed"); });
    JobRecorder follower;
    for (JobRecorder* const observer : {&stopper, &thrower, &follower})
        job->attachObserver(observer);
    job->execute();
    EXPECT_EQ((States{State::Busy, State::Stopping, State::Stopped}), stopper.states());
    EXPECT_EQ(stopper.states(), follower.states());
    EXPECT_EQ(std::vector<std::string>(4, "Errors:0 An observer failed: observer failed"), log.lines());
}

TEST(BgJob, MayLoseItsLastOwnerInAnObserver) {
    for (void (*const call)(BgJob&) :
        {+[](BgJob& job) { job.stop(); }, +[](BgJob& job) { EXPECT_TRUE(job.releaseProtocol()); },
            +[](BgJob& job) { job.execute(); }, +[](BgJob& job) { job.setState(&BgJobFailed::getInstance()); }}) {
        auto const token = std::make_shared<int>(1);
        auto owner = FunctionProtocol::createJob([token](FunctionProtocol&) {});
        JobRecorder observer([&](ObHints const&) {
            owner.reset();
            EXPECT_EQ(2, token.use_count()) << "the job stays for the length of the call";
        });
        owner->attachObserver(&observer);
        call(*owner);
        EXPECT_TRUE(owner.isNull());
        EXPECT_EQ(1, token.use_count());
    }
}

// A protocol that releases itself in one of its functions.
struct Leaving : FunctionProtocol {
    explicit Leaving(Function function) : FunctionProtocol(std::move(function)) {}
    ~Leaving() override { EXPECT_FALSE(isInside); }
    float progress() const override {
        isInside = true;
        EXPECT_TRUE(job->releaseProtocol());
        EXPECT_TRUE(job->isReleased());
        isInside = false;
        return 1.0f;
    }
    BgJob* job = nullptr;
    mutable bool isInside = false;
};

TEST(BgJob, KeepsAProtocolThatIsReleasedFromInsideUntilItReturns) {
    auto const token = std::make_shared<int>(1);
    auto owned = std::make_unique<Leaving>([token](FunctionProtocol&) {});
    Leaving& protocol = *owned;
    auto const job = BgJob::create(std::move(owned));
    protocol.job = job.get();
    EXPECT_EQ(1.0f, job->getStatistics().progress());
    EXPECT_EQ(1, token.use_count());
    // A call from inside the execution would have to wait for itself.
    BgJob* executed = nullptr;
    auto const busy = FunctionProtocol::createJob([&](FunctionProtocol& self) {
        EXPECT_FALSE(executed->releaseProtocol());
        EXPECT_FALSE(self.continueExecution());
    });
    executed = busy.get();
    busy->execute();
    EXPECT_TRUE(busy->releaseProtocol());
}

TEST(BgJob, StopsWhenItIsReleased) {
    GatedJob busy([](FunctionProtocol& self) {
        while (self.continueExecution())
            std::this_thread::yield();
    });
    std::jthread const worker([&] { busy.job->execute(); });
    busy.letGo();
    EXPECT_TRUE(busy.job->releaseProtocol());
    busy.job->stop(); // without effect
}

} // namespace
