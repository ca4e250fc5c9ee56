#include "framework/command/cmUndoGuard.h"
#include "base/exBase.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <utility>

namespace {

using namespace Ko;
using namespace KoTest;

using enum PiExecParam::Transition;

// What is logged, undone and redone: cmUndoGuardModelTest.cpp.
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

TEST_F(CmUndoGuardTest, OfEachKindExecutesAndCollectsInItsWay) {
    auto const use = [this](auto&& guard, std::string const& names) {
        auto const command = [&](int index) { return RecordingCommand::create(names.substr(index, 1), journal); };
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
        ::setenv("KO_DISALLOW_LONG_TRANSITION_NESTING", "1", 1);
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

TEST_F(CmUndoGuardTest, BelongsToTheApplicationThread) {
    std::thread([this] {
        for (auto const& use : std::vector<std::function<void()>>{[this] { perform("", "", NOT_TRANSITION); },
                 [] { CmUndoGuardNoLog(false); }, [] { CmUndoGuard::isLogging(); }})
            EXPECT_EQ("PiAppThread::isCurrent() [framework\\command\\src\\cmUndoGuard]", thrownBy(use));
    }).join();
}

} // namespace
