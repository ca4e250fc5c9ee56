#include "adapters/qt/qtEventLoop.h"

#include "base/evEventManager.h"
#include "tests/adapters/qt/qtTest.h"

#include <QDialog>
#include <QEventLoop>
#include <QWidget>
#include <gmock/gmock.h>
#include <stdexcept>
#include <thread>

using namespace Ko;
using testing::ElementsAre;

namespace {

void post(std::function<void()> request) {
    EvEventManager::getInstance().postRequest(std::move(request));
}

/// Counts how often it was painted.
class Canvas : public QWidget {
public:
    int numPaints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++numPaints; }
};

} // namespace

TEST(QtEventLoop, RunsEventsOfAllThreadsInOrderAlsoThoseThatWaitedForIt) {
    std::vector<int> order;
    post([&] { order.push_back(1); });
    QtEventLoop const loop;
    ASSERT_TRUE(runUntil([&] { return order.size() == 1; }));
    std::thread([&] {
        for (int number = 2; number <= 4; ++number)
            post([&, number] { order.push_back(number); });
    }).join();
    ASSERT_TRUE(runUntil([&] { return order.size() == 4; }));
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST(QtEventLoop, RunsTheFollowingEventsInALoopWithinAnEvent) {
    QtEventLoop const loop;
    std::vector<std::string> order;
    post([&] {
        QEventLoop nested;
        post([&] { nested.quit(); });
        nested.exec();
        order.emplace_back("outer");
    });
    post([&] { order.emplace_back("inner"); });
    ASSERT_TRUE(runUntil([&] { return order.size() == 2; }));
    EXPECT_THAT(order, ElementsAre("inner", "outer"));
}

TEST(QtEventLoop, ReachesAModalDialogThatAnEventHasOpened) {
    QtEventLoop const loop;
    int result = -1;
    post([&] {
        QDialog dialog;
        std::thread worker([&] { post([&] { dialog.done(7); }); });
        result = dialog.exec();
        worker.join();
    });
    ASSERT_TRUE(runUntil([&] { return result >= 0; }));
    EXPECT_EQ(result, 7);
}

TEST(QtEventLoop, PaintsWhileEventsPostEvents) {
    QtEventLoop const loop;
    Canvas canvas;
    canvas.show();
    bool isLeft = false;
    std::function<void()> const again = [&] {
        if (!isLeft) post(again);
    };
    again();
    EXPECT_TRUE(runUntil([&] { return canvas.numPaints > 0; }));
    canvas.update();
    int const before = canvas.numPaints;
    EXPECT_TRUE(runUntil([&] { return canvas.numPaints > before; }));
    isLeft = true;
    EvEventManager::getInstance().processEvents();
}

TEST(QtEventLoop, TakesTurnsWithOtherSourcesWhenTheBudgetIsUsedUp) {
    QtEventLoop loop;
    loop.setBudget(std::chrono::nanoseconds(0));
    std::string order;
    QTimer other;
    QObject::connect(&other, &QTimer::timeout, [&] { order += 't'; });
    for (int number = 0; number < 4; ++number)
        post([&] { order += 'e'; });
    other.start(0);
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(order, 'e') == 4; }));
    EXPECT_EQ(order.find("ee"), std::string::npos) << order;
}

TEST(QtEventLoop, NamesTheFailureOfAnEventAndRunsTheRest) {
    QtEventLoop loop;
    std::vector<std::string> failures;
    QObject::connect(
        &loop, &QtEventLoop::eventFailed, [&](QString const& reason) { failures.push_back(reason.toStdString()); });
    bool hasRun = false;
    post([] { throw std::runtime_error("the disk is full"); });
    post([] { throw 1; });
    post([&] { hasRun = true; });
    ASSERT_TRUE(runUntil([&] { return hasRun; }));
    EXPECT_THAT(failures, ElementsAre("the disk is full", "unknown exception"));
}

TEST(QtEventLoop, MayEndInsideAnEvent) {
    auto loop = std::make_unique<QtEventLoop>();
    bool hasRun = false;
    post([&] { loop.reset(); });
    post([&] { hasRun = true; });
    ASSERT_TRUE(runUntil([&] { return !loop; }));
    EvEventManager::getInstance().processEvents();
    EXPECT_TRUE(hasRun);
}

TEST(QtEventLoop, MayEndWhileOtherThreadsPost) {
    std::atomic<int> numRun = 0;
    std::atomic<bool> isLeft = false;
    std::thread worker([&] {
        while (!isLeft) {
            post([&] { ++numRun; });
            MsgProtocol::display(MsgWarning("text"));
        }
    });
    for (int round = 0; round < 50; ++round) {
        QtEventLoop loop;
        QObject::connect(&loop, &QtEventLoop::message, [](Msg::Severity, QString const&) {});
        int const before = numRun;
        EXPECT_TRUE(runUntil([&] { return numRun > before; }));
    }
    isLeft = true;
    worker.join();
    EvEventManager::getInstance().processEvents();
}

TEST(QtEventLoop, ProcessesTheLastEventsWithoutALoop) {
    QtEventLoop loop;
    int numRun = 0;
    post([&] { ++numRun; });
    post([&] { throw std::runtime_error("text"); });
    post([&] { ++numRun; });
    loop.processWaiting();
    EXPECT_EQ(numRun, 2);
}

TEST(QtEventLoop, ShowsMessagesAfterTheCallThatBringsThem) {
    QtEventLoop loop;
    std::vector<std::string> shown;
    QObject::connect(&loop, &QtEventLoop::message, [&](Msg::Severity severity, QString const& text) {
        shown.push_back((severity == Msg::Severity::Error ? "error: " : "warning: ") + text.toStdString());
    });
    MsgProtocol::display(MsgWarning("ä first"));
    EXPECT_TRUE(shown.empty());
    std::thread([] { MsgProtocol::display(MsgError("second")); }).join();
    ASSERT_TRUE(runUntil([&] { return shown.size() == 2; }));
    EXPECT_THAT(shown, ElementsAre("warning: ä first", "error: second"));
}
