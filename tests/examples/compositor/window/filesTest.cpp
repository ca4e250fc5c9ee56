#include "window/files.h"
#include "tests/examples/compositor/window/windowTest.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class FilesTest : public WindowTest {
protected:
    QString path(char const* name) const { return QString::fromStdString((folder / name).string()); }
    void save(char const* name) {
        bool isSaved = false;
        QObject context;
        QObject::connect(&window.files(), &Files::done, &context, [&] { isSaved = true; });
        window.files().saveAs(path(name));
        waitUntil([&] { return isSaved; });
    }
    // Answers the next question with a button.
    void answer(QMessageBox::StandardButton button) {
        QTimer::singleShot(0, &window, [this, button] {
            auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(nullptr, question);
            ++numQuestions;
            question->button(button)->click();
        });
    }

    int numQuestions = 0;
};

TEST_F(FilesTest, ASavedDocumentIsOpenedAgainAndRemembered) {
    editor.setVisible(id("front"), false);
    EXPECT_TRUE(window.isWindowModified());
    save("a.koc");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_EQ("a.koc[*] - Compositor", window.windowTitle().toStdString());
    window.files().startNew();
    EXPECT_TRUE(editor.document().layers().empty());
    save("b.koc");
    EXPECT_TRUE(window.files().open(path("a.koc")));
    EXPECT_FALSE(editor.document().layer("front").placed.isVisible);
    EXPECT_EQ(QStringList({path("a.koc"), path("b.koc")}), window.files().recent());
}

TEST_F(FilesTest, AsksBeforeChangesAreLost) {
    save("a.koc");
    editor.moveLayer(id("front"), 1, 2);
    answer(QMessageBox::Cancel);
    window.files().startNew();
    EXPECT_EQ(2u, editor.document().layers().size());
    answer(QMessageBox::Cancel);
    EXPECT_FALSE(window.close());
    answer(QMessageBox::Save);
    window.files().startNew();
    EXPECT_TRUE(editor.document().layers().empty());
    EXPECT_TRUE(window.files().open(path("a.koc"))) << "without a question";
    EXPECT_EQ(QPoint(1, 2), placeOf("front")) << "was saved";
    editor.moveLayer(id("front"), 3, 4);
    answer(QMessageBox::Discard);
    window.close();
    waitUntil([this] { return !window.isVisible(); });
    EXPECT_EQ(4, numQuestions);
}

TEST_F(FilesTest, PicturesAreAddedInOneStepUnderFreeNames) {
    editor.document().renderer().renderToFile(folder / "front.png");
    window.files().add({path("front.png"), path("missing.png"), path("front.png")});
    EXPECT_EQ("front 3", editor.document().layers().back().name);
    EXPECT_EQ(4u, editor.document().layers().size());
    EXPECT_EQ(1, steps());
    EXPECT_EQ(1, window.messages().count()) << "the file that is missing";
}

TEST_F(FilesTest, AFailedSaveLeavesTheDocumentModified) {
    editor.moveLayer(id("front"), 1, 2);
    window.files().saveAs(path("missing/a.koc"));
    waitUntil([this] { return window.messages().count() > 0; });
    waitUntil([this] { return window.isWindowModified(); });
    EXPECT_EQ("Untitled", window.files().name().toStdString());
}

TEST_F(FilesTest, UnsavedChangesAreCopiedUntilTheyAreSaved) {
    Recovery& recovery = window.recovery();
    recovery.setDelay(std::chrono::milliseconds(0));
    bool isWritten = false;
    QObject::connect(&recovery, &Recovery::written, &window, [&] { isWritten = true; });
    editor.moveLayer(id("front"), 7, 8);
    waitUntil([&] { return isWritten; });
    EXPECT_TRUE(QFileInfo::exists(recovery.copy()));
    EXPECT_FALSE(recovery.takeOver()) << "its own copy is no copy of another process";
    // As a process that was killed leaves it: the lock is gone, the files are there.
    QFile::copy(recovery.copy(), path("recovery/left.koc"));
    save("a.koc");
    EXPECT_FALSE(QFileInfo::exists(recovery.copy()));
    window.files().startNew();
    auto const found = recovery.takeOver();
    ASSERT_TRUE(found);
    EXPECT_TRUE(window.files().openRecovered(*found));
    EXPECT_EQ(QPoint(7, 8), placeOf("front"));
    EXPECT_TRUE(window.isWindowModified());
    Recovery::remove(*found);
    EXPECT_FALSE(recovery.takeOver());
    editor.history()->setClean();
}

} // namespace
