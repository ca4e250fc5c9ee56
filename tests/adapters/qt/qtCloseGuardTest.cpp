#include "adapters/qt/qtCloseGuard.h"

#include "adapters/qt/qtEventLoop.h"
#include "framework/bgTask/bgManager.h"
#include "tests/adapters/qt/qtTest.h"
#include "tests/support/functionProtocol.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QWidget>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace Ko;
using namespace KoTest;

namespace {

class QtCloseGuardTest : public testing::Test {
protected:
    QtCloseGuardTest() { window.show(); }
    ~QtCloseGuardTest() override { BgManager::getInstance().stopAllJobs(); }

    bool awaitClosed() {
        return runUntil([this] { return !window.isVisible(); });
    }

    QtEventLoop loop;
    QWidget window;
    QtCloseGuard* guard = new QtCloseGuard(window);
    QSignalSpy waiting{guard, &QtCloseGuard::waiting};
    QSignalSpy closing{guard, &QtCloseGuard::closing};
};

} // namespace

TEST_F(QtCloseGuardTest, ClosesWhereNothingSpeaksAgainstIt) {
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(awaitClosed());
    EXPECT_EQ(waiting.size(), 0);
    EXPECT_EQ(closing.size(), 1);
}

TEST_F(QtCloseGuardTest, StaysOpenWhereAQuestionIsRefusedOrFails) {
    std::string asked;
    std::function<bool()> answer = [] { return false; };
    guard->addQuestion([&] {
        asked += "1";
        return answer();
    });
    guard->addQuestion([&] { return asked += "2", true; });
    window.close();
    answer = []() -> bool { throw std::runtime_error("text"); };
    window.close();
    EXPECT_EQ(asked, "11");
    EXPECT_FALSE(guard->isClosing());
    EXPECT_TRUE(window.isVisible());
    answer = [] { return true; };
    window.close();
    EXPECT_EQ(asked, "1112");
    EXPECT_TRUE(awaitClosed());
}

TEST_F(QtCloseGuardTest, WaitsForJobsWhileTheWindowGoesOn) {
    GatedJob job;
    GatedJob uiJob; // not asked about
    BgManager::getInstance().addJob(job.job);
    BgManager::getInstance().addUiJob(uiJob.job, 1);
    job.started.wait();
    uiJob.started.wait();
    guard->setJobsQuestion([](QStringList const& names) { return names == QStringList{"test job"}; });
    window.close();
    window.close(); // once more, impatiently
    ASSERT_TRUE(guard->isClosing());
    ASSERT_EQ(waiting.size(), 1);
    EXPECT_EQ(waiting.front().front().toStringList(), QStringList{"test job"});
    bool isAlive = false;
    QTimer::singleShot(0, [&] { isAlive = true; });
    ASSERT_TRUE(runUntil([&] { return isAlive; }));
    EXPECT_TRUE(window.isVisible());
    job.letGo();
    uiJob.letGo();
    EXPECT_TRUE(awaitClosed());
    EXPECT_TRUE(closing.front().front().toStringList().isEmpty());
}

TEST_F(QtCloseGuardTest, ClosesAtTheEndOfTheGracePeriodAndNamesTheJobs) {
    GatedJob job;
    BgManager::getInstance().addJob(job.job);
    job.started.wait();
    guard->setJobsQuestion({});
    guard->setGrace(std::chrono::milliseconds(1));
    window.close();
    EXPECT_TRUE(awaitClosed());
    EXPECT_EQ(closing.front().front().toStringList(), QStringList{"test job"});
    job.letGo();
    EXPECT_TRUE(runUntil([&] { return !job.job->isRunning(); }));
}

TEST_F(QtCloseGuardTest, AsksByADialogWhetherToCancelJobs) {
    GatedJob job;
    BgManager::getInstance().addJob(job.job);
    job.started.wait();
    for (char const* const answer : {"Keep Open", "Cancel Jobs and Close"}) {
        QTimer::singleShot(0, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box);
            for (auto* const button : box->buttons())
                if (button->text() == answer) button->click();
        });
        window.close();
        EXPECT_EQ(guard->isClosing(), answer[0] == 'C');
    }
    job.letGo();
    EXPECT_TRUE(awaitClosed());
}

TEST_F(QtCloseGuardTest, MayBeDestroyedWithItsWindowWhileItWaits) {
    GatedJob job;
    auto other = std::make_unique<QWidget>();
    auto* const otherGuard = new QtCloseGuard(*other);
    otherGuard->setJobsQuestion({});
    BgManager::getInstance().addJob(job.job);
    job.started.wait();
    other->close();
    bool hasEnded = false;
    auto const end = job.job->onEnd([&](BgJob&) { hasEnded = true; });
    other.reset();
    job.letGo();
    EXPECT_TRUE(runUntil([&] { return hasEnded; }));
}
