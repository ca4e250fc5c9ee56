#include "adapters/qt/qtActionMenus.h"

#include "tests/adapters/qt/qtActionsTest.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>
#include <QVBoxLayout>

using namespace Ko;
using namespace KoTest;

namespace {

/// The entries of a menu: "|" for a separator, "(...)" for one that is disabled, "+" and "-" for a check mark.
std::string entriesOf(QWidget const& menu) {
    std::string result;
    for (QAction const* const entry : menu.actions()) {
        if (!entry->isVisible()) continue;
        std::string text = entry->isSeparator() ? "|" : entry->text().toStdString();
        if (entry->isCheckable()) text = (entry->isChecked() ? "+" : "-") + text;
        if (entry->menu()) text += ">";
        if (!entry->isEnabled()) text = "(" + text + ")";
        result += (result.empty() ? "" : " ") + text;
    }
    return result;
}

class QtActionMenusTest : public QtActionsTest {
protected:
    std::string awaitEntries(QWidget const& place, std::string const& expected) {
        runUntil([&] { return entriesOf(place) == expected; });
        return entriesOf(place);
    }

    QtActionMenus menus{&context};
    QMenu menu;
    QSignalSpy failures{&context, &QtActionContext::failed};
};

} // namespace

TEST_F(QtActionMenusTest, ArrangesBySectionsAndFollowsRegistrations) {
    menu.addAction("own");
    menus.fill(menu);
    QToolBar bar;
    menus.fill(bar);
    menu.addAction("last");
    addStep("Raise", {.section = "Order", .order = 2});
    addStep("Lower", {.section = "Order", .order = 1});
    ActAction const& rename = addStep("Re&name");
    EXPECT_EQ(awaitEntries(menu, "own Re&&name | Lower Raise last"), "own Re&&name | Lower Raise last");
    EXPECT_EQ(entriesOf(bar), "Re&&name | Lower Raise");
    ActRegistry::getInstance().unregisterAction(&rename).reset();
    std::erase(added, &rename);
    EXPECT_EQ(awaitEntries(menu, "own Lower Raise last"), "own Lower Raise last");
}

TEST_F(QtActionMenusTest, ShowsMarksAndReasonsForTheSelection) {
    Set<LiString> hidden{"sky"};
    add({.description = "Visible",
        .isChecked = [&](LiString const& layer) { return !hidden.contains(layer); },
        .perform =
            [&](LiString const& layer) {
                hidden.contains(layer) ? hidden.erase(layer) : hidden.insert(layer).second;
            }});
    ActAction const& raise = addStep("Raise", {.toolTip = "Moves it up"},
        [](LiString const& layer) { return layer == "sky" ? "It is the highest." : ""; });
    menus.fill(menu);
    EXPECT_EQ(awaitEntries(menu, "(Raise) -Visible"), "(Raise) -Visible");
    EXPECT_EQ(menus.getAction(raise)->toolTip(), "Moves it up\nIt is the highest.");
    menus.getAction("Visible")->trigger();
    EXPECT_EQ(awaitEntries(menu, "(Raise) +Visible"), "(Raise) +Visible");
    selection->add(text("tree"));
    hidden.insert("tree");
    EXPECT_EQ(awaitEntries(menu, "Raise -Visible"), "Raise -Visible");
    EXPECT_FALSE(menus.getAction("Visible")->icon().isNull()) << "mixed";
    menus.getAction("Visible")->trigger();
    EXPECT_TRUE(hidden.empty());
}

TEST_F(QtActionMenusTest, LeavesOutWhatIsNotPossibleForAnUnknownReason) {
    add<ActLambda<double>>({.description = "Of Numbers", .perform = [](double) {}});
    addStep("Raise");
    menus.fill(menu);
    EXPECT_EQ(awaitEntries(menu, "Raise"), "Raise");
}

TEST_F(QtActionMenusTest, PerformsOneStepForAllTargetsOrNone) {
    addStep("Raise");
    add({.description = "Break", .perform = [this](LiString const& target) {
             log("Break " + target);
             if (target == "tree") throw std::runtime_error("the disk is full");
         }});
    selection->add(text("tree"));
    menus.update();
    menus.getAction("Raise")->trigger();
    EXPECT_EQ(KoTest::history(*history), "0 *Raise");
    menus.getAction("Break")->trigger();
    EXPECT_EQ(KoTest::history(*history), "0 *Raise");
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures.front().at(1).toString(), "the disk is full");
}

TEST_F(QtActionMenusTest, HasSubMenusForCompositesAndOptions) {
    auto composite = std::make_unique<NamedComposite>("Blend");
    added.push_back(composite.get());
    ActRegistry::getInstance().registerAction(std::move(composite), ActRegistry::Static);
    add({.description = "multiply", .compositeName = "Blend", .perform = [](LiString const&) {}});
    double opacity = 0.5;
    add<ActLambda<LiString, double>>({.description = "Opacity",
        .presentation = {.inputKind = ActInputKind::Number},
        .options = [&](LiString const&) -> Vector<ActLambda<LiString, double>::Option> {
            return {{"half", 0.5, opacity == 0.5}, {"all", 1.0, opacity == 1.0}};
        },
        .perform = [&](LiString const&, double value) { opacity = value; }});
    context.setAskInput([](ActAction const&, ActPresentation const&) { return SnItemBasic<double>::create(0.7); });
    menus.fill(menu);
    EXPECT_EQ(awaitEntries(menu, "Blend> Opacity>"), "Blend> Opacity>");
    EXPECT_EQ(entriesOf(*menus.getAction("Blend")->menu()), "multiply");
    QMenu* const options = menus.getAction("Opacity")->menu();
    Q_EMIT options->aboutToShow();
    EXPECT_EQ(entriesOf(*options), "+half -all | Other\u2026");
    options->actions().at(1)->trigger();
    EXPECT_EQ(opacity, 1.0);
    Q_EMIT options->aboutToShow();
    options->actions().back()->trigger();
    EXPECT_EQ(opacity, 0.7);
}

TEST_F(QtActionMenusTest, AsksForATextAndFindsTheTypeThatTheActionTakes) {
    LiString name;
    ActAction const& rename = add<ActLambda<LiString, LiString>>({.description = "Rename",
        .presentation = {.inputKind = ActInputKind::Text},
        .isValid = [](LiString const&, LiString const& other) { return !other.empty(); },
        .perform = [&](LiString const&, LiString const& other) { name = other; }});
    menus.fill(menu);
    EXPECT_EQ(awaitEntries(menu, "Rename\u2026"), "Rename\u2026");
    context.setAskInput([&](ActAction const& action, ActPresentation const&) { return context.toInput(action, "12"); });
    menus.getAction(rename)->trigger();
    EXPECT_EQ(name, "12");
    EXPECT_EQ(context.toInput(rename, ""), nullptr);
}

TEST_F(QtActionMenusTest, SurvivesActionsThatUnregisterThemselves) {
    ActAction const* once = nullptr;
    once = &add({.description = "Once", .perform = [&](LiString const&) {
                     ActRegistry::getInstance().unregisterAction(once).reset();
                     menus.update();
                 }});
    std::erase(added, once);
    menus.fill(menu);
    menus.update();
    menus.getAction("Once")->trigger();
    EXPECT_EQ(menus.getAction("Once"), nullptr);
    EXPECT_EQ(entriesOf(menu), "");
}

TEST_F(QtActionMenusTest, OpensAContextMenuOfWhatIsPossible) {
    addStep("Raise", {.section = "Order"});
    addStep("Lower", {.section = "Order"}, [](LiString const&) { return "It is the lowest."; });
    addStep("Rename");
    QWidget parent;
    QPointer<QMenu> const open = menus.openContextMenu(parent, {});
    ASSERT_TRUE(open);
    EXPECT_EQ(entriesOf(*open), "Rename | Raise");
    open->close();
    EXPECT_TRUE(runUntil([&] { return !open; }));
    EXPECT_EQ(menus.openContextMenu(parent, {}, {.groups = {"none"}}), nullptr);
}

TEST_F(QtActionMenusTest, ReactsToShortcutsOfTheWindowAndOfTheContextWithTheFocus) {
    QMainWindow window;
    QWidget center;
    QVBoxLayout layout(&center);
    QPushButton button;
    QPushButton canvas;
    layout.addWidget(&button);
    layout.addWidget(&canvas);
    window.setCentralWidget(&center);
    addStep("Everywhere", {.shortcuts = ActShortcut::parseList("Ctrl+L, PageUp")});
    addStep("Canvas", {.shortcuts = ActShortcut::parseList("Ctrl+L"), .shortcutContext = "canvas"});
    menus.setWindow(window);
    menus.setContextWidget("canvas", canvas);
    menus.fill(*window.menuBar()->addMenu("Layer"));
    menus.update();
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto const press = [&](QWidget& focus, Qt::Key key, Qt::KeyboardModifiers held = {}) {
        focus.setFocus();
        journal.clear();
        QTest::keyClick(&focus, key, held);
        return journal;
    };
    EXPECT_EQ(press(button, Qt::Key_L, Qt::ControlModifier), Journal{"+Everywhere sky"});
    EXPECT_EQ(press(canvas, Qt::Key_L, Qt::ControlModifier), Journal{"+Canvas sky"});
    EXPECT_EQ(press(canvas, Qt::Key_PageUp), Journal{"+Everywhere sky"});
    ActShortcutMap changed = menus.getShortcuts();
    changed.change("Everywhere", ActShortcut::parseList("F2"));
    menus.setShortcuts(changed);
    EXPECT_EQ(press(button, Qt::Key_F2), Journal{"+Everywhere sky"});
    EXPECT_EQ(press(button, Qt::Key_PageUp), Journal{});
    window.takeCentralWidget();
    center.layout()->removeWidget(&button);
    center.layout()->removeWidget(&canvas);
    button.setParent(nullptr);
    canvas.setParent(nullptr);
    center.setParent(nullptr);
}
