#include "adapters/qt/qtPalette.h"

#include "adapters/qt/qtShortcutEditor.h"
#include "tests/adapters/qt/qtActionsTest.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

using namespace Ko;
using namespace KoTest;

namespace {

class QtPaletteTest : public QtActionsTest {
protected:
    void type(char const* text) { QTest::keyClicks(edit, text); }
    void press(Qt::Key key) { QTest::keyClick(edit, key); }
    /// The texts of the list with ": note", and ">" before the current one.
    std::string listed() const {
        std::string result;
        for (int row = 0; row < list->model()->rowCount(); ++row)
            result += (row == list->currentIndex().row() ? ">" : "") +
                      list->model()->index(row, 0).data(Qt::AccessibleTextRole).toString().toStdString() + "; ";
        return result;
    }

    QtPaletteTest() { context.watch(history); }

    QWidget window;
    QtPalette palette{&context, &window};
    QLineEdit* edit = palette.findChild<QLineEdit*>();
    QListView* list = palette.findChild<QListView*>();
    QAbstractItemModelTester const tester{list->model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(QtPaletteTest, FindsAndPerformsByTheKeyboardAlone) {
    addStep("Raise Layer");
    addStep("Lower Layer", {}, [](LiString const&) { return "It is the lowest."; });
    addStep("Rename Layer");
    add<ActLambda<double>>({.description = "Layer of Numbers", .perform = [](double) {}});
    palette.setShortcutText([](LiString const& name) { return name == "Raise Layer" ? QString("Ctrl+R") : QString(); });
    palette.popUp();
    EXPECT_EQ(listed(), ">Raise Layer, Ctrl+R; Lower Layer, It is the lowest.; Rename Layer; ");
    type("lyr");
    EXPECT_EQ(listed(), ">Lower Layer, It is the lowest.; Raise Layer, Ctrl+R; Rename Layer; ");
    press(Qt::Key_Return);
    EXPECT_TRUE(journal.empty()) << "not possible";
    EXPECT_TRUE(palette.isVisible());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(journal, Journal{"+Rename Layer sky"});
    EXPECT_FALSE(palette.isVisible());
    palette.popUp();
    EXPECT_EQ(listed(), ">Rename Layer; Raise Layer, Ctrl+R; Lower Layer, It is the lowest.; ") << "used last";
    press(Qt::Key_Up);
    EXPECT_EQ(list->currentIndex().row(), 2);
    press(Qt::Key_Escape);
    EXPECT_FALSE(palette.isVisible());
}

TEST_F(QtPaletteTest, AsksForOptionsAndInputsInTheSamePlace) {
    double opacity = 0.5;
    using Opacity = ActLambda<LiString, double>;
    add<Opacity>({.description = "Opacity",
        .presentation = {.inputKind = ActInputKind::Number},
        .isValid = [](LiString const&, double value) { return value <= 1; },
        .options = [&](LiString const&) -> Vector<Opacity::Option> {
            return {{"half", 0.5, opacity == 0.5}, {"all", 1.0, opacity == 1.0}};
        },
        .perform = [&](LiString const&, double value) { opacity = value; }});
    palette.popUp();
    press(Qt::Key_Return);
    EXPECT_EQ(listed(), ">half, now; all; ");
    press(Qt::Key_Escape);
    EXPECT_EQ(listed(), ">Opacity; ");
    press(Qt::Key_Return);
    type("all");
    press(Qt::Key_Return);
    EXPECT_EQ(opacity, 1.0);
    palette.popUp();
    press(Qt::Key_Return);
    type("2");
    press(Qt::Key_Return);
    EXPECT_TRUE(palette.isVisible());
    EXPECT_TRUE(palette.findChild<QLabel*>()->text().contains("2"));
    press(Qt::Key_Backspace);
    type("0.25");
    press(Qt::Key_Return);
    EXPECT_EQ(opacity, 0.25);
}

TEST_F(QtPaletteTest, KeepsAnInputWhileTheDocumentChanges) {
    LiString name;
    add<ActLambda<LiString, LiString>>({.description = "Rename",
        .presentation = {.inputKind = ActInputKind::Text},
        .perform = [&](LiString const&, LiString const& other) { name = other; }});
    palette.popUp();
    press(Qt::Key_Return);
    type("Tr");
    log("meanwhile");
    QCoreApplication::processEvents();
    type("ee");
    press(Qt::Key_Return);
    EXPECT_EQ(name, "Tree");
}

TEST_F(QtPaletteTest, ForgetsActionsThatAreUnregisteredWhileItIsOpen) {
    ActAction const& raise = addStep("Raise");
    addStep("Rename");
    addStep("Remove");
    palette.popUp();
    press(Qt::Key_Up); // to the last one
    ActRegistry::getInstance().unregisterAction(&raise).reset();
    std::erase(added, &raise);
    EXPECT_TRUE(runUntil([&] { return listed() == "Rename; >Remove; "; }));
}

TEST_F(QtActionsTest, ShortcutsAreEditedByPressingThem) {
    addStep("Raise", {.shortcuts = ActShortcut::parseList("Ctrl+R")});
    addStep("Lower", {.shortcuts = ActShortcut::parseList("Ctrl+L")});
    ActShortcutMap map;
    map.setDefaults("Raise", ActShortcut::parseList("Ctrl+R"));
    map.setDefaults("Lower", ActShortcut::parseList("Ctrl+L"));
    QtShortcutEditor editor;
    editor.setShortcuts(map);
    QSignalSpy const changes(&editor, &QtShortcutEditor::shortcutsChanged);
    auto* const tree = editor.findChild<QTreeWidget*>();
    auto* const keys = editor.findChildren<QLineEdit*>().at(1);
    auto const row = [&](char const* name) { return tree->findItems(name, Qt::MatchExactly).front(); };
    auto const button = [&](char const* text) {
        for (auto* const each : editor.findChildren<QPushButton*>())
            if (each->text() == text) return each;
        return static_cast<QPushButton*>(nullptr);
    };
    tree->setCurrentItem(row("Raise"));
    for (Qt::Key const key : {Qt::Key_PageUp, Qt::Key_Plus, Qt::Key_Comma, Qt::Key_Delete, Qt::Key_F12, Qt::Key_L}) {
        QTest::keyClick(keys, key, Qt::ControlModifier);
        EXPECT_EQ(editor.getShortcuts().getShortcuts("Raise").size(), 1u);
    }
    EXPECT_EQ(changes.size(), 6);
    EXPECT_EQ(ActShortcut::getText(editor.getShortcuts().getShortcuts("Raise")), "Ctrl+L");
    EXPECT_TRUE(row("Lower")->toolTip(1).contains("Raise")) << "a conflict";
    button("&Default")->click();
    EXPECT_EQ(row("Raise")->text(1), "Ctrl+R");
    EXPECT_EQ(row("Lower")->toolTip(1), "");
    button("&Remove")->click();
    EXPECT_EQ(row("Raise")->text(1), "");
    editor.findChildren<QLineEdit*>().front()->setText("low");
    EXPECT_TRUE(row("Raise")->isHidden());
}
