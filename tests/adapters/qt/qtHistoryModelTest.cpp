#include "adapters/qt/qtHistoryModel.h"

#include "framework/command/cmMerger.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingCommand.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QComboBox>
#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>

using namespace Ko;
using namespace KoTest;

namespace {

/// Joins commands whose names begin with "+".
class PlusMerger : public CmMerger {
public:
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const&, RCShdPtr<CmCommand> const& next) override {
        return next->getDescription().starts_with("+") ? next : nullptr;
    }
};

class NamelessCommand : public RecordingCommand {
public:
    using RecordingCommand::RecordingCommand;
    LiString getDescription() const override { throw std::runtime_error("no name"); }
};

class QtHistoryModelTest : public testing::Test {
protected:
    void log(std::string const& name) { stack->executeAndLog(RecordingCommand::create(name, journal)); }
    void logFailing(std::string const& name) {
        auto const command = RecordingCommand::create(name, journal);
        command->onUnexecute = [] { throw std::runtime_error("the disk is full"); };
        stack->executeAndLog(command);
    }
    /// As `history` shows the stack.
    std::string shown() const {
        std::string result;
        for (int row = 0; row < model.rowCount(); ++row) {
            QModelIndex const index = model.index(row);
            result += (index.data(QtHistoryModel::IsCurrentRole).toBool() ? "*" : "") +
                      (row == 0 ? "0" : index.data().toString().toStdString()) + " ";
        }
        if (!result.empty()) result.pop_back();
        return result;
    }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    QtHistoryModel model{stack};
    QAbstractItemModelTester const tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(QtHistoryModelTest, ShowsTheHistoryAsItIsAfterAnySequenceOfChanges) {
    std::mt19937 random(7);
    auto const upTo = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    stack->setMerger(RCShdPtr<PlusMerger>::create());
    stack->setMaxStackHeight(6);
    for (int step = 0; step < 3000; ++step) {
        switch (random() % 9) {
        case 0:
            stack->tryUndo();
            break;
        case 1:
            stack->tryRedo();
            break;
        case 2:
            model.goTo(upTo(stack->getStackHeight()));
            break;
        case 3:
            stack->removeLast();
            break;
        case 4:
            if (random() % 8 == 0) stack->clear();
            break;
        case 5:
            stack->setMaxStackHeight(3 + upTo(5));
            break;
        case 6:
            logFailing("f" + std::to_string(step));
            break;
        case 7:
            random() % 2 ? stack->setClean() : stack->resetClean();
            break;
        default:
            log((random() % 2 ? "+" : "c") + std::to_string(step));
        }
        ASSERT_EQ(shown(), history(*stack)) << "after step " << step;
        ASSERT_EQ(model.isModified(), !stack->isClean());
        for (int row = 0; row < model.rowCount(); ++row)
            ASSERT_EQ(model.index(row).data(QtHistoryModel::IsCleanRole).toBool(), row == stack->getCleanPosition());
    }
}

TEST_F(QtHistoryModelTest, ChangesItsRowsInPlaceWhenStepsAreMerged) {
    stack->setMerger(RCShdPtr<PlusMerger>::create());
    log("c");
    QSignalSpy const removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy const inserted(&model, &QAbstractItemModel::rowsInserted);
    log("+1");
    EXPECT_EQ(shown(), "0 *+1");
    EXPECT_EQ(removed.size() + inserted.size(), 0);
}

TEST_F(QtHistoryModelTest, MarksGroupsTheSavedStateAndWhatCanBeRedone) {
    log("single");
    stack->setClean();
    {
        CmUndoGuard guard(stack, "Both");
        guard.execAndAddUndoCommand(RecordingCommand::create("a", journal));
        guard.execAndAddUndoCommand(RecordingCommand::create("b", journal));
    }
    stack->undo();
    auto const marks = [this](int row) {
        std::string result;
        for (int role : {QtHistoryModel::IsCurrentRole, QtHistoryModel::IsCleanRole, QtHistoryModel::IsGroupRole,
                 QtHistoryModel::IsUndoneRole})
            result += model.index(row).data(role).toBool() ? '1' : '0';
        return result;
    };
    EXPECT_EQ(marks(0), "0000");
    EXPECT_EQ(marks(1), "1100");
    EXPECT_EQ(marks(2), "0011");
    EXPECT_EQ(model.index(1).data(Qt::AccessibleTextRole).toString(), "single (saved)");
    EXPECT_FALSE(model.index(2).data(Qt::DecorationRole).value<QIcon>().isNull());
}

TEST_F(QtHistoryModelTest, GoesWhereAViewIsClickedAndTheViewFollows) {
    QListView view;
    QComboBox box;
    model.show(view);
    model.show(box);
    view.show();
    for (char const* const name : {"a", "b", "c"})
        log(name);
    EXPECT_EQ(view.currentIndex().row(), 3);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(model.index(1)).center());
    EXPECT_EQ(history(*stack), "0 *a b c");
    EXPECT_EQ(box.currentIndex(), 1);
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(history(*stack), "0 a *b c");
    EXPECT_EQ(view.currentIndex().row(), 2);
}

TEST_F(QtHistoryModelTest, OffersUndoAndRedoByName) {
    EXPECT_FALSE(model.getUndoAction()->isEnabled());
    log("Black & White");
    EXPECT_EQ(model.getUndoAction()->text(), "&Undo Black && White");
    model.getUndoAction()->trigger();
    EXPECT_EQ(history(*stack), "*0 Black & White");
    EXPECT_EQ(model.getUndoAction()->text(), "&Undo");
    EXPECT_FALSE(model.getUndoAction()->isEnabled());
    model.getRedoAction()->trigger();
    EXPECT_EQ(history(*stack), "0 *Black & White");
}

TEST_F(QtHistoryModelTest, LeavesAStepThatIsOpenAlone) {
    log("a");
    { CmUndoGuard const begin(stack, "Drag", PiExecParam::BEGIN_TRANSITION); }
    model.undo();
    model.goTo(0);
    { CmUndoGuard const end(stack, "Drag", PiExecParam::END_TRANSITION); }
    EXPECT_EQ(journal, Journal{"+a"});
    model.undo();
    EXPECT_EQ(journal.back(), "-a");
}

TEST_F(QtHistoryModelTest, NamesTheFailureOfACommand) {
    logFailing("a");
    log("b");
    QSignalSpy const failures(&model, &QtHistoryModel::failed);
    model.goTo(0);
    ASSERT_EQ(failures.size(), 1);
    EXPECT_TRUE(failures.front().front().toString().contains("the disk is full"));
    EXPECT_EQ(shown(), history(*stack));
}

TEST_F(QtHistoryModelTest, ShowsACommandThatCannotDescribeItself) {
    log("a");
    stack->executeAndLog(RCShdPtr<NamelessCommand>::create("b", journal));
    EXPECT_EQ(model.index(2).data().toString().toStdString(), "no name");
    model.setStack(stack);
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.index(2).data().toString().toStdString(), "no name");
    model.undo();
    EXPECT_EQ(model.getCurrentRow(), 1);
}

TEST_F(QtHistoryModelTest, FollowsAnotherDocument) {
    log("a");
    QSignalSpy const modified(&model, &QtHistoryModel::modifiedChanged);
    auto const other = RCShdPtr<CmCommandStack>::create();
    model.setStack(other);
    log("b");
    EXPECT_EQ(shown(), "*0");
    ASSERT_EQ(modified.size(), 1);
    EXPECT_FALSE(modified.front().front().toBool());
    model.setStack(nullptr);
    model.undo();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.getCurrentRow(), -1);
}
