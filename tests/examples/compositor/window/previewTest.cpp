#include "tests/examples/compositor/window/windowTest.h"
#include "window/inputDialog.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <functional>

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class PreviewTest : public WindowTest {
protected:
    PreviewTest() { window.session().select({id("back")}); }
    QAction* entry(QString const& name) {
        for (QMenu* const menu : window.menuBar()->findChildren<QMenu*>())
            for (QAction* const action : menu->actions())
                if (action->text().startsWith(name)) return action;
        return nullptr;
    }
    // Chooses an operator, and uses the dialog that asks for its arguments.
    void open(QString const& name, std::function<void(InputDialog&)> const& use) {
        waitUntil([&] { return entry(name) && entry(name)->isEnabled(); });
        bool isUsed = false;
        QTimer::singleShot(0, &window, [&] {
            auto* const dialog = dynamic_cast<InputDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(nullptr, dialog);
            isUsed = true;
            use(*dialog);
            if (dialog->isVisible()) dialog->reject();
        });
        entry(name)->trigger();
        EXPECT_TRUE(isUsed);
    }
    SharedPicture picture() const { return editor.document().layer("back").placed.picture; }
    static QLineEdit& input(InputDialog& dialog) { return *dialog.findChild<QLineEdit*>(); }
    static QPushButton& button(InputDialog& dialog, QDialogButtonBox::StandardButton which) {
        return *dialog.findChild<QDialogButtonBox*>()->button(which);
    }

    SharedPicture const before = picture();
};

TEST_F(PreviewTest, OkIsOneStepWithThePictureThatWasShown) {
    QColor shown;
    open("Grade", [&](InputDialog& dialog) {
        input(dialog).setText("0.5 1 1");
        waitUntil([this] { return picture() != before; });
        shown = shownAt(5, 5);
        EXPECT_EQ(0, steps());
        button(dialog, QDialogButtonBox::Ok).click();
    });
    EXPECT_EQ(1, steps());
    EXPECT_NE(QColor(200, 0, 0), shown);
    EXPECT_EQ(shown, shownAt(5, 5));
    editor.history()->undo();
    EXPECT_EQ(before, picture());
}

TEST_F(PreviewTest, CancelLeavesDocumentAndHistoryAsTheyWere) {
    editor.moveLayer(id("front"), 1, 1);
    editor.history()->undo();
    open("Grade", [&](InputDialog& dialog) {
        for (char const* const arguments : {"0.5 1 1", "0.2 1 1", "0.7 0.5 1"})
            input(dialog).setText(arguments);
        waitUntil([this] { return picture() != before; });
        button(dialog, QDialogButtonBox::Cancel).click();
    });
    EXPECT_EQ(before, picture());
    EXPECT_EQ(0, steps());
    EXPECT_TRUE(editor.history()->canRedo()) << "what was undone before";
    EXPECT_EQ(QColor(200, 0, 0), shownAt(5, 5));
}

TEST_F(PreviewTest, ArgumentsThatDoNotFitAreNotAccepted) {
    open("Grade", [&](InputDialog& dialog) {
        struct Case {
            char const* arguments;
            bool fits;
        };
        for (Case const& its : {Case{"", false}, {"1 1 1 1", false}, {"\"1 1 1", false}, {"1 1 1", true}}) {
            input(dialog).setText(its.arguments);
            EXPECT_EQ(its.fits, button(dialog, QDialogButtonBox::Ok).isEnabled()) << its.arguments;
        }
    });
    EXPECT_EQ(0, steps());
}

} // namespace
