#include "tests/examples/compositor/window/windowTest.h"

#include <QAccessible>
#include <QMenuBar>
#include <QScrollBar>
#include <QToolBar>
#include <QToolButton>

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class MainWindowTest : public WindowTest {
protected:
    QScrollBar& bar(Qt::Orientation orientation) {
        for (auto* const found : window.centralWidget()->findChildren<QScrollBar*>())
            if (found->orientation() == orientation) return *found;
        throw std::logic_error("there is no such bar");
    }
    QToolButton* tool(QString const& text) {
        for (auto* const button : window.findChild<QToolBar*>()->findChildren<QToolButton*>())
            if (button->defaultAction() && button->defaultAction()->text() == text) return button;
        return nullptr;
    }
};

TEST_F(MainWindowTest, ScrollBarsMoveTheViewAndFollowIt) {
    window.canvas().fit();
    EXPECT_FALSE(bar(Qt::Horizontal).isEnabled()) << "all is visible";
    EXPECT_FALSE(bar(Qt::Vertical).isEnabled());
    window.canvas().zoomTo(20.0);
    for (Qt::Orientation const direction : {Qt::Horizontal, Qt::Vertical}) {
        QScrollBar& moved = bar(direction);
        ASSERT_TRUE(moved.isEnabled());
        moved.setValue(moved.minimum());
        QPointF const corner = window.canvas().placeOf({0, 0});
        EXPECT_GT(direction == Qt::Horizontal ? corner.x() : corner.y(), 0) << "the margin before the picture";
        moved.setValue(moved.maximum());
        QPointF const end = window.canvas().placeOf({300, 200});
        EXPECT_LT(direction == Qt::Horizontal ? end.x() : end.y(),
            direction == Qt::Horizontal ? window.canvas().width() : window.canvas().height());
        moved.setFocus();
        int const before = moved.value();
        QTest::keyClick(&moved, Qt::Key_PageUp);
        EXPECT_EQ(before - moved.pageStep(), moved.value());
    }
    window.canvas().fit();
    EXPECT_FALSE(bar(Qt::Horizontal).isEnabled());
}

TEST_F(MainWindowTest, AViewOutsideOfThePictureCanBeScrolledBack) {
    Viewport view;
    view.origin = {-5000, 40};
    ScrollRange const across = view.range(Qt::Horizontal, {300, 200}, {400, 300}, 24);
    EXPECT_EQ(5000, across.value);
    EXPECT_EQ(5000, across.most);
    EXPECT_LE(across.least, -24);
    ScrollRange const down = view.range(Qt::Vertical, {300, 200}, {400, 300}, 24);
    EXPECT_EQ(down.least, down.most) << "all is visible in this direction";
}

TEST_F(MainWindowTest, ToolsPerformActionsAndAreReachedByKeys) {
    EXPECT_EQ(nullptr, tool("Raise")) << "nothing is selected";
    window.session().select({id("back")});
    waitUntil([this] { return tool("Raise") && tool("Raise")->isVisible(); });
    EXPECT_EQ(Qt::TabFocus, tool("Raise")->focusPolicy());
    QTest::keyClick(tool("Raise"), Qt::Key_Space);
    EXPECT_EQ("back", editor.document().layers().back().name);
    EXPECT_EQ(QToolButton::InstantPopup, tool("Blend")->popupMode());
    EXPECT_EQ(1, steps());
}

TEST_F(MainWindowTest, EveryControlHasAnAccessibleName) {
    window.session().select({id("back")});
    QCoreApplication::processEvents();
    for (auto* const widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || !(widget->focusPolicy() & Qt::TabFocus)) continue;
        // The line of a spin box belongs to the spin box.
        if (widget->focusProxy() || widget->parentWidget()->focusProxy() || widget->objectName().startsWith("qt_"))
            continue;
        QAccessibleInterface* const shown = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(nullptr, shown);
        EXPECT_NE("", shown->text(QAccessible::Name).toStdString())
            << widget->metaObject()->className() << " in " << widget->parentWidget()->metaObject()->className();
    }
}

TEST_F(MainWindowTest, ColoursChangeWhileItIsShown) {
    QPalette const original = QApplication::palette();
    auto& application = *static_cast<QApplication*>(QCoreApplication::instance());
    Appearance appearance(application, Scheme::Light);
    window.offerColours(appearance);
    auto const lightness = [this] { return window.grab().toImage().pixelColor(window.width() - 4, 200).lightness(); };
    auto const choose = [this](char const* name) {
        for (auto* const menu : window.menuBar()->findChildren<QMenu*>())
            for (QAction* const action : menu->actions())
                if (action->text() == name) action->trigger();
        QCoreApplication::processEvents();
    };
    EXPECT_GT(lightness(), 200);
    choose("&Dark");
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 80);
    EXPECT_LT(window.palette().color(QPalette::Window).lightness(), 80);
    EXPECT_LT(lightness(), 80);
    EXPECT_EQ(static_cast<int>(Scheme::Dark), settings.value("colours").toInt());
    choose("&Light");
    EXPECT_GT(lightness(), 200);
    QApplication::setPalette(original);
}

} // namespace
