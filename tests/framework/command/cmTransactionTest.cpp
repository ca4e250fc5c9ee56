#include "framework/command/cmEx.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;
using Outcome = CmReplay::Outcome;

class CmTransactionTest : public testing::Test {
protected:
    CmTransactionTest() {
        for (char const* const name : {"a", "b"})
            stack->log(command(name));
        stack->undo();
        journal.clear();
    }

    RCShdPtr<RecordingCommand> command(char const* name) { return RecordingCommand::create(name, journal); }
    /// One guard of a transaction.
    void perform(char const* name, PiExecParam const& param = {}) {
        CmUndoGuard(stack, name, param).execAndAddUndoCommand(command(name));
    }
    CbSubscription recordTransactions() {
        return CmUndoGuard::onTransaction([this](bool hasBegun) { journal.push_back(hasBegun ? "begun" : "ended"); });
    }
    void callOutside(std::string name) {
        CmUndoGuard::callOutside([this, name] { journal.push_back(name + " at " + history(*stack)); });
    }

    Journal journal;
    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmTransactionTest, RollingBackTakesBackTheGuardsOwnCommandsAndKeepsWhatCanBeRedone) {
    {
        CmUndoGuard outer(stack, "Outer");
        outer.execAndAddUndoCommand(command("1"));
        {
            CmUndoGuard inner(stack, "Inner");
            EXPECT_EQ(Outcome::NothingToDo, inner.rollBack().outcome);
            inner.execAndAddUndoCommand(command("2"));
            inner.execAndAddUndoCommand(command("3"));
            EXPECT_THROW(outer.rollBack(), ExAssertionFailed);
            EXPECT_EQ(Outcome::Done, inner.rollBack().outcome);
        }
        EXPECT_EQ((Journal{"+1", "+2", "+3", "-3", "-2"}), journal);
        EXPECT_FALSE(stack->isClean());
        EXPECT_EQ(Outcome::Done, outer.rollBack().outcome);
    }
    EXPECT_EQ("0 *a b", history(*stack));
    stack->redo();
    EXPECT_EQ("0 a *b", history(*stack));
}

TEST_F(CmTransactionTest, AnAbandonedLongTransactionLeavesDocumentAndHistoryAsTheyWere) {
    CbSubscription const transactions = recordTransactions();
    EXPECT_THROW(CmUndoGuard::abandonLongTransition(), ExAssertionFailed);
    perform("1", PiExecParam::BEGIN_TRANSITION);
    perform("2", PiExecParam::BEGIN_TRANSITION);
    perform("3", PiExecParam::END_TRANSITION);
    callOutside("result");
    EXPECT_EQ(Outcome::Done, CmUndoGuard::abandonLongTransition().outcome);
    EXPECT_EQ((Journal{"begun", "+1", "+2", "+3", "-3", "-2", "-1", "ended", "result at 0 *a b"}), journal);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    perform("4");
    EXPECT_EQ("0 a *4", history(*stack));
}

TEST_F(CmTransactionTest, AFailureOnTheWayBackDropsTheWholeHistory) {
    struct Row {
        bool isExpected;
        std::string reason;
    };
    for (Row const& row : {Row{true, "Command un/execution failure."}, Row{false, "broken"}}) {
        stack->clear();
        stack->log(command("a"));
        std::string cut;
        CbSubscription const changes = stack->onHistoryChange([&](CmHistoryChange const& change) {
            if (change.kind == CmHistoryChange::Kind::CutByFailure)
                cut = change.failed->getDescription() + ": " + change.error->getReason();
        });
        auto const failing = command("1");
        failing->onUnexecute = [&row] {
            if (row.isExpected) throw CmEx::ExCommandFailure("test", 1);
            throw std::runtime_error("broken");
        };
        {
            CmUndoGuard guard(stack, "Guard");
            guard.execAndAddUndoCommand(command("0"));
            guard.execAndAddUndoCommand(failing);
            guard.execAndAddUndoCommand(command("2"));
            if (row.isExpected) {
                CmReplay const result = guard.rollBack();
                EXPECT_EQ(Outcome::Failed, result.outcome);
                EXPECT_EQ(1, result.numDropped);
                EXPECT_EQ(row.reason, result.error->getReason());
            } else {
                EXPECT_THROW(guard.rollBack(), std::runtime_error);
            }
            guard.execAndAddUndoCommand(command("3"));
        }
        EXPECT_EQ("1: " + row.reason, cut);
        EXPECT_EQ("0 *Guard", history(*stack));
        EXPECT_FALSE(stack->isClean());
    }
}

TEST_F(CmTransactionTest, ActionsOutsideComeInOrderAfterTheStepIsLoggedWhateverOneThrows) {
    callOutside("now");
    auto const closeThrowing = [this] {
        CmUndoGuard guard(stack, "Step");
        callOutside("first");
        CmUndoGuard::callOutside([] { throw std::runtime_error("second"); });
        CmUndoGuard::callOutside([this] {
            perform("own");
            callOutside("nested");
            journal.push_back("done");
        });
        callOutside("last");
        guard.execAndAddUndoCommand(command("1"));
    };
    EXPECT_THROW(closeThrowing(), std::runtime_error);
    EXPECT_EQ((Journal{"now at 0 *a b", "+1", "first at 0 a *Step", "+own", "done", "last at 0 a Step *own",
                  "nested at 0 a Step *own"}),
        journal);
}

TEST_F(CmTransactionTest, ActionsThatACommandHandsOverComeAfterItsUndo) {
    auto const talkative = command("t");
    talkative->onUnexecute = [this] { callOutside("result"); };
    stack->executeAndLog(talkative);
    stack->undo();
    EXPECT_EQ("result at 0 *a t", journal.back());
}

} // namespace
