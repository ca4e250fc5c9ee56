#include "framework/command/cmUndoGuard.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"
#include "variables.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <utility>

namespace {

using namespace Ko;
using namespace KoTest;

using enum PiExecParam::Transition;

// cmUndoGuardModelTest.cpp tests the logged steps, and undo and redo.
class CmUndoGuardTest : public testing::Test {
protected:
    // Opens a guard, executes commands named by the letters in it, and closes it.
    void perform(std::string const& names, char const* description, PiExecParam::Transition transition) {
        CmUndoGuard guard(stack, description, transition);
        for (char const name : names)
            guard.execAndAddUndoCommand(RecordingCommand::create(std::string(1, name), journal));
    }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmUndoGuardTest, LogsALongTransactionUnderItsLastDescription) {
    for (auto const& [middle, last, expected] :
        {std::array{"", "", "Drag"}, std::array{"Move", "", "Move"}, std::array{"Move", "Drop", "Drop"}}) {
        stack->clear();
        perform("a", "Drag", BEGIN_TRANSITION);
        perform("b", middle, TRANSITION);
        perform("c", middle, NOT_TRANSITION);
        perform("d", last, END_TRANSITION);
        EXPECT_EQ(std::string("0 *") + expected, history(*stack));
    }
}

TEST_F(CmUndoGuardTest, EachKindExecutesAndCollectsAsItShould) {
    auto const use = [this](auto&& guard, std::string const& names) {
        auto const command = [&](std::size_t index) {
            return RecordingCommand::create(names.substr(index, 1), journal);
        };
        guard.execAndAddUndoCommand(command(0));
        guard.addUndoCommand(command(1));
        guard.execUndoCommand(command(2));
    };
    {
        CmUndoGuard guard(stack, MsgSubscription("MSG_STEP"), NOT_TRANSITION);
        use(guard, "abc");
        use(CmUndoGuardNoRedo(), "def");
        use(CmUndoGuardNoLog(false), "ghi");
    }
    EXPECT_EQ("0 *MSG_STEP", history(*stack));
    EXPECT_EQ((Journal{"+a", "+c", "+d", "+f", "+g", "+i"}), std::exchange(journal, {}));
    stack->undo();
    stack->redo();
    EXPECT_EQ((Journal{"-e", "-d", "-b", "-a", "+a", "+b"}), journal);
}

TEST_F(CmUndoGuardTest, RefusesNestedLongTransactionsWhereTheyAreDisallowed) {
    inChildProcess([this] {
        KoTest::setVariable("KO_DISALLOW_LONG_TRANSITION_NESTING", "1");
        perform("a", "Outer", BEGIN_TRANSITION);
        EXPECT_EQ("Nested long transitions are disallowed. [framework\\command\\src\\cmUndoGuard]",
            thrownBy<ExInternalError>([this] { perform("b", "Inner", BEGIN_TRANSITION); }));
        perform("c", "", END_TRANSITION);
        EXPECT_EQ("0 *Outer", history(*stack));
        EXPECT_EQ((Journal{"+a", "+c"}), journal);
    });
}

TEST_F(CmUndoGuardTest, CallsEndCallbacksOnceInOrderAsLongAsTheyExist) {
    auto const record = [this](char const* name) {
        return RCShdPtr<FunctionHandler>::create([this, name] { journal.push_back(name); });
    };
    RCShdPtr<FunctionHandler> const later = record("later");
    RCShdPtr<FunctionHandler> const first = RCShdPtr<FunctionHandler>::create([&] {
        journal.push_back("first");
        CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(later));
    });
    RCShdPtr<FunctionHandler> gone = record("gone");
    {
        CmUndoGuard guard(stack, "", NOT_TRANSITION);
        for (RCShdPtr<CbHandler<CbEmptyType>> const handler : {first, gone})
            CmUndoGuard::addEndOfOutermostGuardCallback(handler);
        gone.reset();
        perform("a", "", NOT_TRANSITION);
    }
    perform("", "", NOT_TRANSITION);
    EXPECT_EQ((Journal{"+a", "first", "later"}), journal);
}

TEST_F(CmUndoGuardTest, KeepsTheHistoryAsItIsWhileItHasCollectedCommandsForIt) {
    std::function<void()> const operations[] = {[this] { stack->undo(); }, [this] { stack->redo(); },
        [this] { stack->moveTo(stack->getBegin()); }, [this] { stack->clear(); },
        [this] { stack->setMaxStackHeight(2); }, [this] { stack->removeLast(); }};
    auto const expectRefused = [&](std::string const& step) {
        for (auto const& operation : operations)
            EXPECT_EQ("The history cannot be changed while the step \"" + step +
                          "\" is open: its commands are executed but not logged yet. "
                          "[framework\\command\\src\\cmCommandStack]",
                thrownBy<ExInternalError>(operation));
    };
    perform("1", "", NOT_TRANSITION);
    perform("2", "", NOT_TRANSITION);
    {
        CmUndoGuard guard(stack, "Step", NOT_TRANSITION);
        stack->undo();
        guard.execAndAddUndoCommand(RecordingCommand::create("a", journal));
        expectRefused("Step");
    }
    perform("b", "Drag", BEGIN_TRANSITION);
    perform("", "Drop", TRANSITION);
    expectRefused("Drop");
    perform("c", "", END_TRANSITION);
    EXPECT_EQ("0 Macro: 1 Step *Drop", history(*stack));
    stack->undo();
    EXPECT_EQ((Journal{"+1", "+2", "-2", "+a", "+b", "+c", "-c", "-b"}), journal);
}

TEST_F(CmUndoGuardTest, UsesNoDescriptionOfAnEarlierStep) {
    perform("a", "Delete Layer", NOT_TRANSITION);
    auto const command = RecordingCommand::create("b", journal);
    command->onExecute = [this] { CmUndoGuard const guard(stack, "Inner"); };
    CmUndoGuard(nullptr, "Rename Layer", NOT_TRANSITION).execAndAddUndoCommand(command);
    EXPECT_EQ("0 Delete Layer *Macro: b", history(*stack)) << "a guard without commands leaves no description behind";
}

TEST_F(CmUndoGuardTest, ReleasesTheStackWhenItIsClosed) {
    RCShdPtr<CmCommandStack> const other = RCShdPtr<CmCommandStack>::create();
    auto const command = RecordingCommand::create("a", journal);
    command->onDestroy = [&] {
        CmUndoGuard guard(other, "Later", NOT_TRANSITION);
        guard.execAndAddUndoCommand(RecordingCommand::create("b", journal));
    };
    CmUndoGuard(std::exchange(stack, {}), "", NOT_TRANSITION).execAndAddUndoCommand(command);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

TEST_F(CmUndoGuardTest, ReportsCommandsThatWereNeverLogged) {
    inChildProcess(
        [this] {
            auto open = std::make_unique<CmUndoGuard>(stack, "Step", NOT_TRANSITION);
            open->execAndAddUndoCommand(RecordingCommand::create("a", journal));
            open->execAndAddUndoCommand(RecordingCommand::create("b", journal));
            std::thread([&] {
                CmUndoGuard* const guard = open.release();
                EXPECT_THROW(delete guard, ExAssertionFailed);
            }).join();
            InInitMgr::finalize();
        },
        "Commands:0. An undo guard or a long transaction is never closed.\n.*"
        "Commands:0. The step \"Step\" is never logged: 2 commands are lost.");
}

TEST_F(CmUndoGuardTest, BelongsToTheApplicationThread) {
    std::thread([this] {
        for (auto const& use : std::vector<std::function<void()>>{[this] { perform("", "", NOT_TRANSITION); },
                 [] { CmUndoGuardNoLog const guard(false); }, [] { EXPECT_TRUE(CmUndoGuard::isLogging()); },
                 [] { CmUndoGuard::registerUndoGuardExtension(nullptr); }})
            EXPECT_EQ("PiAppThread::isCurrent() [framework\\command\\src\\cmUndoGuard]", thrownBy(use));
    }).join();
}

} // namespace
