#include "tests/examples/compositor/window/windowTest.h"

#include <QFile>
#include <QListView>
#include <filesystem>

namespace {

using namespace compositor;
using namespace KoTest;

class ExportTest : public WindowTest {
protected:
    ExportTest() {
        for (auto* const list : window.findChildren<QListView*>())
            if (list->accessibleName() == "Jobs") view = list;
        window.resize(1200, 800);
    }
    Ko::QtJobModel& jobs() { return *qobject_cast<Ko::QtJobModel*>(view->model()); }
    QString path(char const* name) const { return QString::fromStdString((folder / name).string()); }
    int state(int row = 0) { return jobs().index(row).data(Ko::QtJobModel::StateRole).toInt(); }
    void clickButton(int fromTheRight) {
        QRect const row = view->visualRect(jobs().index(0));
        QPoint const place(row.right() - 17 - 24 * fromTheRight, row.center().y() + 1);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
    }
    static QByteArray contents(QString const& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QListView* view = nullptr;
};

TEST_F(ExportTest, WritesTheDocumentAsItWasWhenItBegan) {
    editor.document().renderer().renderToFile(folder / "expected.png");
    window.files().exportTo(path("a.png"));
    editor.removeLayer(id("front"));
    waitUntil([this] { return state() == Ko::BgJobHintChangeState::Complete; });
    EXPECT_EQ(contents(path("expected.png")), contents(path("a.png")));
    EXPECT_FALSE(contents(path("a.png")).isEmpty());
}

TEST_F(ExportTest, AFailedOneIsRetriedByItsButton) {
    window.files().exportTo(path("later/a.png"));
    waitUntil([this] { return state() == Ko::BgJobHintChangeState::Failed; });
    EXPECT_NE("", jobs().index(0).data(Ko::QtJobModel::ReasonRole).toString().toStdString());
    std::filesystem::create_directory(folder / "later");
    clickButton(1);
    waitUntil([this] { return jobs().rowCount() == 1 && state() == Ko::BgJobHintChangeState::Complete; });
    EXPECT_TRUE(QFile::exists(path("later/a.png")));
    clickButton(0);
    EXPECT_EQ(0, jobs().rowCount()) << "removed from the list";
}

TEST_F(ExportTest, ACancelledOneLeavesNoFileAndHoldsUpNoClose) {
    editor.setCanvas({20000, 12000});
    waitUntil([this] { return window.canvas().isCurrent(); });
    window.files().exportTo(path("never.png"));
    waitUntil([this] { return state() == Ko::BgJobHintChangeState::Busy; });
    clickButton(0);
    waitUntil([this] { return state() == Ko::BgJobHintChangeState::Stopped; });
    EXPECT_FALSE(QFile::exists(path("never.png")));
    bool hasAsked = false;
    window.closeGuard().setJobsQuestion([&](QStringList const&) { return !(hasAsked = true); });
    editor.history()->setClean();
    window.close();
    waitUntil([this] { return !window.isVisible(); });
    EXPECT_FALSE(hasAsked);
}

TEST_F(ExportTest, ACloseAsksWhileOneRunsAndGoesOnWhenItIsCancelled) {
    editor.setCanvas({20000, 12000});
    editor.history()->setClean();
    waitUntil([this] { return window.canvas().isCurrent(); });
    window.files().exportTo(path("never.png"));
    waitUntil([this] { return state() == Ko::BgJobHintChangeState::Busy; });
    QStringList asked;
    bool isAgreed = false;
    window.closeGuard().setJobsQuestion([&](QStringList const& names) {
        asked = names;
        return isAgreed;
    });
    window.close();
    EXPECT_EQ(QStringList("render never.png"), asked);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(Ko::BgJobHintChangeState::Busy, state());
    isAgreed = true;
    window.close();
    waitUntil([this] { return !window.isVisible(); });
    EXPECT_FALSE(QFile::exists(path("never.png")));
}

} // namespace
