#include "adapters/qt/qtJobModel.h"

#include "adapters/qt/qtEventLoop.h"
#include "adapters/qt/qtJobDelegate.h"
#include "framework/bgTask/bgAfter.h"
#include "tests/adapters/qt/qtTest.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/program.h"

#include <QAbstractItemModelTester>
#include <QListView>
#include <QTest>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace Ko;
using namespace KoTest;
using State = BgJobHintChangeState;

namespace {

class QtJobModelTest : public testing::Test {
protected:
    QtJobModelTest() { setLaunchThrottle(0); }
    ~QtJobModelTest() override { BgManager::getInstance().stopAllJobs(); }

    RCShdPtr<BgJob> add(FunctionProtocol::Function work) {
        auto job = FunctionProtocol::createJob(std::move(work));
        BgManager::getInstance().addJob(job);
        return job;
    }
    /// A job that runs until it is asked to end.
    RCShdPtr<BgJob> addEndless(std::function<void(FunctionProtocol&)> first = [](FunctionProtocol&) {}) {
        return add([first](FunctionProtocol& self) {
            first(self);
            while (self.continueExecution())
                std::this_thread::yield();
        });
    }
    QVariant shown(BgJob const& job, int role) const { return model.index(model.getRow(job)).data(role); }
    std::string text(BgJob const& job, int role) const { return shown(job, role).toString().toStdString(); }
    bool awaitState(BgJob const& job, int state) {
        return runUntil([&] { return shown(job, QtJobModel::StateRole) == state && model.getRow(job) >= 0; });
    }
    bool awaitSummary(char const* expected) {
        return runUntil([&] { return model.getSummary().text == expected; });
    }

    QtEventLoop loop;
    QtJobModel model;
    QAbstractItemModelTester const tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(QtJobModelTest, ShowsWhatAJobDoesAndHowFarItIs) {
    auto const job = addEndless([](FunctionProtocol& self) {
        self.reportPhase("Reading");
        self.reportUnits(3, 12, "files");
        self.reportMessage(BgMessage::Severity::Warning, "no profile");
    });
    ASSERT_TRUE(runUntil([&] { return shown(*job, QtJobModel::MessagesRole).toStringList().size() == 1; }));
    EXPECT_EQ(shown(*job, QtJobModel::MessagesRole).toStringList().front(), QString::fromUtf8("⚠ no profile"));
    EXPECT_EQ(text(*job, Qt::DisplayRole), "test job");
    EXPECT_EQ(text(*job, QtJobModel::DetailRole).substr(0, 28), "Reading · 3 of 12 files · ");
    EXPECT_TRUE(shown(*job, QtJobModel::RemainingRole).isValid());
    EXPECT_FLOAT_EQ(shown(*job, QtJobModel::ProgressRole).toFloat(), 0.25f);
    EXPECT_EQ(model.getSummary().text, "1 job, 25%");
    model.cancel(model.getRow(*job));
    ASSERT_TRUE(awaitState(*job, State::Stopped));
    EXPECT_EQ(text(*job, QtJobModel::DetailRole), "Cancelled");
    EXPECT_TRUE(awaitSummary(""));
}

TEST_F(QtJobModelTest, ShowsUnknownProgressAsUnknown) {
    auto const job = addEndless([](FunctionProtocol& self) { self.reportUnknownProgress(); });
    ASSERT_TRUE(awaitState(*job, State::Busy));
    ASSERT_TRUE(runUntil([&] { return !shown(*job, QtJobModel::ProgressRole).isValid(); }));
    EXPECT_TRUE(awaitSummary("1 job"));
}

TEST_F(QtJobModelTest, NamesTheJobsThatAJobWaitsFor) {
    GatedJob first;
    BgManager::getInstance().addJob(first.job);
    auto const second = FunctionProtocol::createJob();
    BgManager::getInstance().addJob(second, BgAfter{{first.job}});
    ASSERT_TRUE(runUntil([&] { return model.rowCount() == 2; }));
    EXPECT_EQ(text(*second, QtJobModel::DetailRole), "Waits for test job");
    first.letGo();
    EXPECT_TRUE(awaitState(*second, State::Complete));
    EXPECT_EQ(text(*second, QtJobModel::DetailRole), "Done");
}

TEST_F(QtJobModelTest, ShowsWhyAJobHasFailedAndRunsItAgain) {
    int numRuns = 0;
    QtJobModel::Retry const again = [&] {
        return add([&](FunctionProtocol&) {
            if (++numRuns == 1) throw std::runtime_error("The server\n does not answer.");
        });
    };
    auto const job = again();
    model.setRetry(job, again);
    ASSERT_TRUE(awaitState(*job, State::Failed));
    EXPECT_EQ(text(*job, QtJobModel::DetailRole), "The server does not answer.");
    EXPECT_TRUE(awaitSummary("1 failed"));
    EXPECT_TRUE(shown(*job, QtJobModel::CanRetryRole).toBool());
    model.retry(model.getRow(*job));
    EXPECT_EQ(model.getRow(*job), -1);
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_TRUE(awaitState(*model.getJob(0), State::Complete));
    EXPECT_FALSE(model.index(0).data(QtJobModel::CanRetryRole).toBool());
    model.removeEnded();
    EXPECT_TRUE(BgManager::getInstance().getJobs().empty());
}

TEST_F(QtJobModelTest, PausesAJobAndLetsItGoOn) {
    auto const job = addEndless();
    ASSERT_TRUE(awaitState(*job, State::Busy));
    model.setPaused(0, true);
    EXPECT_EQ(text(*job, QtJobModel::DetailRole), "Paused");
    EXPECT_TRUE(job->isPaused());
    model.setPaused(0, false);
    EXPECT_FALSE(job->isPaused());
}

TEST_F(QtJobModelTest, StopsPrograms) {
    NamedPipe const pipe;
    auto const job = BgManager::getInstance().addJob(std::make_unique<Program>(pipe.tell() + "pause"));
    pipe.hear();
    ASSERT_TRUE(awaitState(*job, State::Busy));
    model.cancelAll();
    EXPECT_TRUE(awaitState(*job, State::Stopped));
}

TEST_F(QtJobModelTest, ListsUserInterfaceJobsOnlyWhereTheyAreWanted) {
    auto const job = addEndless();
    auto const uiJob = FunctionProtocol::createJob([](FunctionProtocol& self) {
        while (self.continueExecution())
            std::this_thread::yield();
    });
    BgManager::getInstance().addUiJob(uiJob, 1);
    QtJobModel const late;
    QtJobModel const all(nullptr, BgFollow::JobsAndUiJobs);
    EXPECT_EQ(late.getRow(*job), 0);
    EXPECT_EQ(late.getRow(*uiJob), -1);
    EXPECT_EQ(all.rowCount(), 2);
    EXPECT_TRUE(runUntil([&] { return model.rowCount() == 1; }));
}

TEST_F(QtJobModelTest, ListsTheJobsOfTheManagerWhateverTheyDo) {
    for (int number = 0; number < 200; ++number) {
        add([number](FunctionProtocol& self) {
            self.reportProgress(number, 200);
            if (number % 7 == 0) throw std::runtime_error("text");
        });
        if (number % 10 == 0) QCoreApplication::processEvents();
        if (number % 50 == 0) model.removeEnded();
    }
    auto const listed = BgManager::getInstance().getJobs();
    ASSERT_TRUE(runUntil([&] {
        return static_cast<std::size_t>(model.rowCount()) == listed.size() && model.getSummary().numRunning == 0;
    }));
    for (int row = 0; auto const& job : listed)
        EXPECT_EQ(model.getRow(*job), row++);
    model.removeEnded();
    EXPECT_EQ(model.rowCount(), 0);
}

namespace {

class QtJobDelegateTest : public QtJobModelTest {
protected:
    QtJobDelegateTest() {
        view.resize(300, 200);
        delegate.show(view, model);
        view.show();
    }
    /// The button of the first row, counted from the right.
    void click(int button) {
        QRect const row = view.visualRect(model.index(0));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, {row.right() - 6 - 24 * button - 12, row.center().y()});
    }
    /// Whether a row has pixels that are clearly red.
    bool isRed(int row) {
        QImage const image = view.viewport()->grab(view.visualRect(model.index(row))).toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (QColor const colour = image.pixelColor(x, y); colour.red() > 2 * colour.green() + 60) return true;
        return false;
    }

    QListView view;
    QtJobDelegate delegate;
};

} // namespace

TEST_F(QtJobDelegateTest, HasButtonsForWhatIsPossible) {
    auto const job = addEndless();
    ASSERT_TRUE(awaitState(*job, State::Busy));
    click(1);
    EXPECT_TRUE(job->isPaused());
    click(1);
    EXPECT_FALSE(job->isPaused());
    click(0);
    ASSERT_TRUE(awaitState(*job, State::Stopped));
    click(0);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(QtJobDelegateTest, IsOperatedByKeys) {
    auto const job = addEndless();
    ASSERT_TRUE(awaitState(*job, State::Busy));
    view.setCurrentIndex(model.index(0));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_TRUE(job->isPaused());
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_TRUE(awaitState(*job, State::Stopped));
}

TEST_F(QtJobDelegateTest, DrawsFailuresInRed) {
    auto const good = add([](FunctionProtocol&) {});
    auto const bad = add([](FunctionProtocol&) { throw std::runtime_error("text"); });
    ASSERT_TRUE(awaitState(*good, State::Complete) && awaitState(*bad, State::Failed));
    EXPECT_FALSE(isRed(model.getRow(*good)));
    EXPECT_TRUE(isRed(model.getRow(*bad)));
}
