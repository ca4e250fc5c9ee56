#include "docs/examples/window.h"

#include "tests/adapters/qt/qtTest.h"
#include "tests/support/temporaryFolder.h"

#include <QTest>
#include <gtest/gtest.h>

// The host of the guide, operated as a user would.
TEST(WindowExample, UndoesPaintsAndCloses) {
    KoTest::TemporaryFolder const folder;
    QDir::setCurrent(QString::fromStdString(folder / std::string())); // for what is painted
    QtEventLoop events;
    Document document;
    addActions(document);
    Window window(document, events);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto* const list = window.findChild<QListWidget*>();
    list->setFocus();
    list->item(0)->setSelected(true);
    QColor const before = document.colours["Sand"];
    QAction const& lighter = *window.findChild<QtActionMenus*>()->getAction("Lighter");
    ASSERT_TRUE(Ko::runUntil([&] { return lighter.isEnabled(); }));
    QTest::keyClick(list, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(document.colours["Sand"], before.lighter(120));
    EXPECT_TRUE(window.isWindowModified());
    QTest::keyClick(list, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(document.colours["Sand"], before);
    EXPECT_FALSE(window.isWindowModified());
    auto* const jobs = window.findChild<QtJobModel*>();
    BgManager::getInstance().addJob(std::make_unique<RenderProtocol>(document.colours));
    ASSERT_TRUE(Ko::runUntil([&] { return jobs->rowCount() == 1; }));
    jobs->cancelAll();
    ASSERT_TRUE(Ko::runUntil([&] { return jobs->getSummary().numRunning == 0; }));
    window.close();
    EXPECT_TRUE(Ko::runUntil([&] { return !window.isVisible(); }));
    ActRegistry::getInstance().unregisterActionsInGroup("");
}
