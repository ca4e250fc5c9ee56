#include "tests/examples/compositor/window/windowTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileSystemWatcher>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTimer>

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class RecoveryTest : public WindowTest {
protected:
    RecoveryTest() { QDir().mkpath(recoveryFolder()); }
    QString recoveryFolder() const { return dataFolder() + "/KOframework/compositor/recovery"; }
    QString dataFolder() const { return QString::fromStdString((folder / "data").string()); }
    // Another process plays a script and is killed when it has copied its changes.
    void killAfter(char const* script) {
        QString const path = QString::fromStdString((folder / "edit.kos").string());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(script) > 0);
        file.close();
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", dataFolder());
        process.setProcessEnvironment(environment);
        QFileSystemWatcher const watcher({recoveryFolder()});
        process.start(QCoreApplication::applicationDirPath() + "/compositor-window", {"--pause", "0", path});
        waitUntil([&] { return !copies().isEmpty() || process.state() == QProcess::NotRunning; });
        process.kill();
        process.waitForFinished(-1);
        EXPECT_EQ(QProcess::CrashExit, process.exitStatus());
    }
    QStringList copies() const { return QDir(recoveryFolder()).entryList({"*.koc"}, QDir::Files); }
    // Answers the question of a window which offers the copies.
    bool offered(QMessageBox::ButtonRole answer) {
        MainWindow next(editor, events, settings, recoveryFolder());
        QTimer::singleShot(0, &next, [&] {
            auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(nullptr, question);
            for (QAbstractButton* const button : question->buttons())
                if (question->buttonRole(button) == answer) return button->click();
        });
        return next.offerRecovery();
    }
};

TEST_F(RecoveryTest, ChangesOfAKilledProcessAreOfferedOnce) {
    killAfter("canvas 50 40\nchecker board 30 30 5 ff0000 00ff00\nmove board 7 8\n");
    ASSERT_EQ(1, copies().size());
    EXPECT_TRUE(offered(QMessageBox::AcceptRole));
    EXPECT_EQ(QPoint(7, 8), placeOf("board"));
    EXPECT_EQ(1u, editor.document().layers().size());
    EXPECT_FALSE(editor.history()->isClean()) << "they are still unsaved";
    EXPECT_TRUE(copies().isEmpty());
}

TEST_F(RecoveryTest, DiscardedChangesAreGone) {
    killAfter("canvas 50 40\n");
    EXPECT_FALSE(offered(QMessageBox::DestructiveRole));
    EXPECT_EQ(2u, editor.document().layers().size()) << "the open document is kept";
    EXPECT_TRUE(copies().isEmpty());
}

} // namespace
