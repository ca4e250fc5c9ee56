#include "framework/command/cmUndoGuard.h"
#include "base/exBase.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

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

// What is logged, undone and redone: cmUndoGuardModelTest.cpp.
class CmUndoGuardTest : public testing::Test {
protected:
    // Opens a guard, executes commands named by the letters in it, and closes it.
    void perform(std::string const& names, char const* description, Transition transition) {
        CmUndoGuard guard(stack, description, transition);
        for (char const name : names)
            guard.execAndAddUndoCommand(RecordingCommand::create(std::string(1, name), journal));
    }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmUndoGuardTest, LogsALongTransactionUnderItsLastDescription) {
    struct Row {
        char const* middle;
        char const* last;
        char const* expected;
    };
    for (Row const& row : {Row{"", "", "Drag"}, Row{"Move", "", "Move"}, Row{"Move", "Drop", "Drop"}}) {
        stack->clear();
        perform("a", "Drag", begin);
        perform("b", row.middle, step);
        perform("c", row.middle, plain);
        perform("d", row.last, end);
        EXPECT_EQ(std::string("0 *") + row.expected, history(*stack));
    }
}

TEST_F(CmUndoGuardTest, RefusesNestedLongTransactionsWhereTheyAreDisallowed) {
    inChildProcess([this] {
        ::setenv("KO_DISALLOW_LONG_TRANSITION_NESTING", "1", 1);
        perform("a", "Outer", begin);
        EXPECT_EQ("Nested long transitions are disallowed. [framework\\command\\src\\cmUndoGuard]",
            thrownBy<ExInternalError>([this] { perform("b", "Inner", begin); }));
        perform("c", "", end);
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
        CmUndoGuard guard(stack, "", plain);
        for (RCShdPtr<CbHandler<CbEmptyType>> const handler : {first, gone})
            CmUndoGuard::addEndOfOutermostGuardCallback(handler);
        gone.reset();
        perform("a", "", plain);
    }
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
            EXPECT_EQ("PiAppThread::isCurrent() [framework\\command\\src\\cmUndoGuard]", thrownBy(use));
    }).join();
}

} // namespace
