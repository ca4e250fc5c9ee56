#include "base/evEventManager.h"
#include "framework/bgTask/bgEx.h"
#include "tests/support/functionProtocol.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

std::size_t process() {
    return EvEventManager::getInstance().processEvents();
}

/// Executes a job on this thread, and records what observers on the application thread are notified of.
class JobReports : public testing::Test {
protected:
    void run(FunctionProtocol::Function work) {
        process();
        job = FunctionProtocol::createJob(std::move(work));
        subscriptions.push_back(job->on<BgJobHintPhase>([this](auto const& hint) { say("phase " + hint.getPhase()); }));
        subscriptions.push_back(job->on<BgJobHintUnits>([this](BgJobHintUnits const& hint) {
            BgUnits const& units = hint.getUnits();
            say(std::to_string(units.done) + "/" + std::to_string(units.total) + units.unit);
        }));
        subscriptions.push_back(job->on<BgJobHintMessage>([this](BgJobHintMessage const& hint) {
            say(hint.getMessages().front().text + ".." + hint.getMessages().back().text + " +" +
                std::to_string(hint.getNumOmitted()));
        }));
        subscriptions.push_back(job->onEnd([this](BgJob& ended) { say("end " + ended.getReason()); }));
        job->execute();
    }
    std::string take() {
        process();
        return std::exchange(said, {});
    }
    void say(std::string const& text) { said += text + "; "; }

    RCShdPtr<BgJob> job;
    std::string said;
    std::vector<ObSubscription> subscriptions;
};

TEST_F(JobReports, ArriveTogetherBeforeTheEnd) {
    run([](FunctionProtocol& self) {
        self.reportPhase("read");
        for (int message = 0; message < 1000; ++message)
            self.reportMessage(BgMessage::Severity::Warning, std::to_string(message));
        self.reportPhase("write");
        self.reportUnits(1, 4, "files");
        self.reportUnits(2, 4, "files");
    });
    EXPECT_EQ("", said) << "nothing before the loop runs";
    EXPECT_EQ("phase write; 2/4files; 0..99 +900; end ; ", take());
    EXPECT_EQ("write", job->getPhase());
    EXPECT_EQ(2, job->getUnits().done);
    EXPECT_EQ(0.5f, job->getStatistics().progress());
    subscriptions.push_back(job->onEnd([this](BgJob&) { say("late end"); }));
    EXPECT_EQ("late end; ", take());
    EXPECT_EQ(0u, process());
}

TEST_F(JobReports, EachBurstHasItsOwnHundred) {
    run([](FunctionProtocol& self) {
        for (char const* const text : {"a", "b"}) {
            self.reportMessage(BgMessage::Severity::Information, text);
            process(); // this is the application thread
        }
    });
    EXPECT_EQ("a..a +0; b..b +0; end ; ", take());
}

TEST_F(JobReports, CountUnitsBeyondAnInteger) {
    constexpr std::int64_t many = 10'000'000'000;
    struct Row {
        std::int64_t done, total;
        float progress;
    };
    for (Row const& row : {Row{many, 2 * many, 0.5f}, Row{-1, 2, -0.5f}, Row{many, 10, 214748364.7f}, Row{3, 0, NAN},
             Row{3, -many, NAN}}) {
        run([&row](FunctionProtocol& self) {
            self.reportUnits(row.done, row.total, "bytes");
            EXPECT_EQ(std::isnan(row.progress), std::isnan(self.progress()));
            if (!std::isnan(row.progress)) {
                EXPECT_FLOAT_EQ(row.progress, self.progress());
            }
        });
        EXPECT_EQ(row.done, job->getUnits().done);
        EXPECT_EQ(std::max<std::int64_t>(row.total, 0), job->getUnits().total);
    }
}

TEST_F(JobReports, ProgressIsNotifiedAtOnceAfterItWasUnknown) {
    auto const observed = FunctionProtocol::createJob([](FunctionProtocol& self) {
        self.reportProgress(50, 100);
        self.reportUnknownProgress();
        self.reportProgress(51, 100);
        self.reportProgress(52, 100);
    });
    JobRecorder recorder;
    observed->attachObserver(&recorder);
    observed->execute();
    EXPECT_EQ((std::vector<float>{0.5f, 0.51f}), recorder.progress());
}

TEST_F(JobReports, AnEndBringsResultAndReason) {
    struct Row {
        char const* name;
        FunctionProtocol::Function work;
        char const* said;
        bool hasError;
    };
    for (Row const& row :
        {Row{"result", [](FunctionProtocol& self) { self.setResult(std::make_unique<int>(5)); }, "end ; ", false},
            Row{"library", [](FunctionProtocol&) { throw BgEx::ExBgTaskFailed("file", 1, "full"); },
                "end A background job failed: full; ", true},
            Row{"standard", [](FunctionProtocol&) { throw std::runtime_error("bad"); }, "end bad; ", false},
            Row{"unknown", [](FunctionProtocol&) { throw 5; }, "end an exception of an unknown type; ", false}}) {
        run(row.work);
        EXPECT_EQ(row.said, take()) << row.name;
        EXPECT_EQ(row.hasError, job->cloneError() != nullptr) << row.name;
        EXPECT_EQ(row.said == std::string("end ; "), job->getResult<std::unique_ptr<int>>() != nullptr) << row.name;
        EXPECT_EQ(nullptr, job->getResult<int>()) << row.name;
    }
}

TEST_F(JobReports, AJobKeepsItsNamesAfterItsProtocol) {
    struct Reporting : FunctionProtocol {
        Reporting() : FunctionProtocol([](FunctionProtocol&) {}) {}
        ~Reporting() override {
            EXPECT_EQ("test job", getJobName());
            reportPhase("too late");
            reportProgress(1, 1);
            setResult(7);
        }
    };
    for (bool const isReleased : {true, false}) {
        auto const observed = BgJob::create(std::make_unique<Reporting>());
        JobRecorder recorder;
        observed->attachObserver(&recorder);
        if (isReleased) {
            EXPECT_TRUE(observed->releaseProtocol());
        }
        EXPECT_EQ("test job", observed->getName());
        EXPECT_EQ("test", observed->getType());
        EXPECT_EQ("", observed->getPhase());
    }
}

TEST(BgJobTimes, EstimateTheRestFromWhatIsDone) {
    using namespace std::chrono;
    BgJobTimes::Time const start(hours(1000));
    struct Row {
        char const* name;
        float progress;
        seconds now, paused;
        std::optional<seconds> remaining;
    };
    for (Row const& row : {Row{"half", 0.5f, 10s, 0s, 10s}, Row{"a quarter, paused", 0.25f, 10s, 6s, 12s},
             Row{"done", 1.0f, 10s, 0s, 0s}, Row{"not begun", 0.0f, 10s, 0s, {}}, Row{"too much", 1.5f, 10s, 0s, {}},
             Row{"unknown", NAN, 10s, 0s, {}}, Row{"clock set back", 0.5f, -5s, 0s, 0s}}) {
        BgJobTimes times;
        EXPECT_FALSE(times.estimateRemaining(0.5f, start)) << "not started";
        times.started = start;
        times.paused = row.paused;
        auto const remaining = times.estimateRemaining(row.progress, start + row.now);
        EXPECT_EQ(row.remaining.has_value(), remaining.has_value()) << row.name;
        if (remaining && row.remaining) {
            EXPECT_EQ(*row.remaining, round<seconds>(*remaining)) << row.name;
        }
    }
    BgJobTimes endless;
    endless.started = start;
    EXPECT_GT(*endless.estimateRemaining(1e-38f, start + hours(1)), hours(24 * 365)) << "no overflow";
}

} // namespace
