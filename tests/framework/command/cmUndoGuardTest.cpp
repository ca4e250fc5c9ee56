#include "framework/command/cmUndoGuard.h"
#include "base/exBase.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingCommand.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

using Transition = PiExecParam::Transition;
constexpr Transition plain = PiExecParam::NOT_TRANSITION;
constexpr Transition begin = PiExecParam::BEGIN_TRANSITION;
constexpr Transition step = PiExecParam::TRANSITION;
constexpr Transition end = PiExecParam::END_TRANSITION;

class CmUndoGuardTest : public testing::Test {
protected:
    // Opens a guard, executes commands named by the letters in it, and closes it.
    void perform(std::string const& names, char const* description, Transition transition) {
        CmUndoGuard guard(stack, description, transition);
        for (char const name : names)
            guard.execAndAddUndoCommand(make(name));
    }
    RCShdPtr<RecordingCommand> make(char name) { return RecordingCommand::create(std::string(1, name), journal); }
    LiString lastDescription() { return (*stack->getCurrent())->getDescription(); }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmUndoGuardTest, LogsNestedGuardsAsOneStepWhenTheOutermostCloses) {
    {
        CmUndoGuard outer(stack, "Outer", plain);
        outer.execAndAddUndoCommand(make('a'));
        perform("b", "Inner", plain);
        EXPECT_EQ("*0", history(*stack));
        EXPECT_TRUE(CmUndoGuard::isGuardActive());
        EXPECT_TRUE(CmUndoGuard::isLogging());
    }
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    EXPECT_EQ("0 *Outer", history(*stack));
    stack->undo();
    stack->redo();
    EXPECT_EQ((Journal{"+a", "+b", "-b", "-a", "+a", "+b"}), journal);
}

TEST_F(CmUndoGuardTest, LogsALongTransactionAtItsEndUnderItsLastDescription) {
    struct Row {
        char const* first;
        char const* middle;
        char const* last;
        char const* expected;
    };
    for (Row const& row :
        {Row{"Drag", "", "", "Drag"}, Row{"Drag", "Move", "", "Move"}, Row{"Drag", "Move", "Drop", "Drop"}}) {
        stack->clear();
        perform("a", row.first, begin);
        EXPECT_TRUE(CmUndoGuard::isLongTransition());
        perform("b", row.middle, step);
        perform("c", row.middle, plain);
        EXPECT_FALSE(CmUndoGuard::isLongTransitionEnding());
        EXPECT_EQ("*0", history(*stack));
        perform("d", row.last, end);
        EXPECT_FALSE(CmUndoGuard::isLongTransition());
        EXPECT_EQ(std::string("0 *") + row.expected, history(*stack));
        journal.clear();
        stack->undo();
        EXPECT_EQ((Journal{"-d", "-c", "-b", "-a"}), journal);
    }
}

TEST_F(CmUndoGuardTest, RefusesNestedLongTransactionsWhereTheyAreDisallowed) {
    // A program started anew: the switch is read once.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    inChildProcess([this] {
        ::setenv("KO_DISALLOW_LONG_TRANSITION_NESTING", "1", 1);
        perform("a", "Outer", begin);
        try {
            perform("b", "Inner", begin);
            ADD_FAILURE() << "accepted";
        } catch (ExInternalError const& error) {
            EXPECT_STREQ("Nested long transitions are disallowed.", error.what());
        }
        perform("c", "", end);
        EXPECT_EQ("0 *Outer", history(*stack));
        EXPECT_EQ((Journal{"+a", "+c"}), journal);
    });
}

TEST_F(CmUndoGuardTest, DropsCommandsOnlyWhileLoggingIsSuspended) {
    {
        CmUndoGuard guard(stack, "", plain);
        {
            CmUndoGuardNoLog quiet(false);
            CmUndoGuardNoLog nested(true);
            EXPECT_FALSE(CmUndoGuard::isLogging());
            quiet.execAndAddUndoCommand(make('a'));
            quiet.addUndoCommand(make('b'));
            perform("c", "", plain);
        }
        EXPECT_TRUE(CmUndoGuard::isLogging());
        guard.execAndAddUndoCommand(make('d'));
    }
    EXPECT_EQ((Journal{"+a", "+c", "+d"}), journal);
    EXPECT_EQ("Macro: d", lastDescription());
}

TEST_F(CmUndoGuardTest, TellsListenersOfWhatWasDoneQuietlyUnlessAskedNotTo) {
    int processed = 0;
    FunctionHandler listener([&] { ++processed; });
    stack->addCommandProcessedCallback(&listener);
    for (bool const quiet : {false, true}) {
        CmUndoGuardNoLog guard(quiet);
        perform("a", "", plain);
    }
    { CmUndoGuardNoLog const unattached(false); }
    EXPECT_EQ(1, processed);
    EXPECT_EQ("*0", history(*stack));
    stack->removeCommandProcessedCallback(&listener);
}

TEST_F(CmUndoGuardTest, UndoesButDoesNotRedoWhatWasCollectedWithoutRedo) {
    EXPECT_THROW(CmUndoGuardNoRedo(), ExAssertionFailed) << "only inside another guard";
    {
        CmUndoGuard guard(stack, "", plain);
        guard.execAndAddUndoCommand(make('a'));
        {
            CmUndoGuardNoRedo noRedo;
            noRedo.execAndAddUndoCommand(make('b'));
            CmUndoGuardNoRedo const nested;
            perform("c", "", plain);
        }
        guard.execAndAddUndoCommand(make('d'));
    }
    journal.clear();
    stack->undo();
    stack->redo();
    EXPECT_EQ((Journal{"-d", "-c", "-b", "-a", "+a", "+d"}), journal);
}

TEST_F(CmUndoGuardTest, CallsEndCallbacksOnceInOrderAsLongAsTheyExist) {
    auto const record = [this](char const* name) {
        return RCShdPtr<FunctionHandler>::create([this, name] {
            EXPECT_EQ("*0", history(*stack)) << "before the commands are logged";
            journal.push_back(name);
        });
    };
    RCShdPtr<FunctionHandler> const later = record("later");
    RCShdPtr<FunctionHandler> const first = RCShdPtr<FunctionHandler>::create([&] {
        journal.push_back("first");
        CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(later));
    });
    RCShdPtr<FunctionHandler> gone = record("gone");
    {
        CmUndoGuard guard(stack, "", plain);
        for (RCShdPtr<CbHandler<CbEmptyType>> const handler : {first, gone})
            CmUndoGuard::addEndOfOutermostGuardCallback(handler);
        gone.reset();
        perform("a", "", plain);
        EXPECT_EQ(Journal{"+a"}, journal);
    }
    stack->clear();
    perform("", "", plain);
    EXPECT_EQ((Journal{"+a", "first", "later"}), journal);
}

TEST_F(CmUndoGuardTest, TellsExtensionsOfOutermostGuardsInOrderAndInReverse) {
    inChildProcess([this] {
        for (char const* const name : {"1", "2"})
            CmUndoGuard::registerUndoGuardExtension(RCShdPtr<RecordingExtension>::create(name, journal));
        EXPECT_THROW(CmUndoGuard::registerUndoGuardExtension(nullptr), ExNullPtr);
        {
            CmUndoGuard const guard(stack, "", plain);
            perform("a", "", plain);
        }
        EXPECT_EQ((Journal{"begin 1", "begin 2", "+a", "end 2", "end 1"}), journal);
        journal.clear();
        perform("", "", begin);
        perform("", "", end);
        EXPECT_EQ(
            (Journal{"begin 1!", "begin 2!", "end 2!", "end 1!", "begin 1!", "begin 2!", "end 2!", "end 1!"}), journal);
    });
}

TEST_F(CmUndoGuardTest, BelongsToTheApplicationThread) {
    std::thread([this] {
        for (auto const& use : std::vector<std::function<void()>>{
                 [this] { perform("", "", plain); }, [] { CmUndoGuardNoLog(false); }, [] { CmUndoGuard::isLogging(); }})
            try {
                use();
                ADD_FAILURE() << "accepted";
            } catch (ExAssertionFailed const& error) {
                EXPECT_STREQ("PiAppThread::isCurrent()", error.what());
                EXPECT_STREQ("framework\\command\\src\\cmUndoGuard", error.getFile());
            }
    }).join();
}

} // namespace
