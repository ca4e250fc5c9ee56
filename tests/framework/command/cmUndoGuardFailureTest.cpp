#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

struct Unexpected : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class CmUndoGuardFailure : public testing::Test {
protected:
    ~CmUndoGuardFailure() override { expectClosed(); }

    void perform(char const* name, PiExecParam::Transition transition = PiExecParam::NOT_TRANSITION) {
        CmUndoGuard guard(stack, name, transition);
        guard.execAndAddUndoCommand(RecordingCommand::create(name, journal));
    }
    // No guard is left open, and the next one works.
    void expectClosed() {
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        EXPECT_FALSE(CmUndoGuard::isLogging());
        int const undoable = stack->getNbUndoableCommands();
        perform("next");
        EXPECT_EQ(undoable + 1, stack->getNbUndoableCommands());
    }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmUndoGuardFailure, ACommandThatThrowsLeavesTheOnesBeforeItLogged) {
    for (bool const expected : {true, false}) {
        stack->clear();
        RCShdPtr<RecordingCommand> const failing = RecordingCommand::create("b", journal);
        failing->onExecute = [expected] {
            if (expected) throw CmEx::ExCommandFailure("source", 1);
            throw Unexpected("command");
        };
        auto const transaction = [&] {
            CmUndoGuard outer(stack, "Step", {});
            perform("a");
            CmUndoGuard inner(stack, "", {});
            inner.execAndAddUndoCommand(failing);
        };
        if (expected)
            EXPECT_THROW(transaction(), CmEx::ExCommandFailure);
        else
            EXPECT_THROW(transaction(), Unexpected);
        EXPECT_EQ("0 *Step", history(*stack));
        journal.clear();
        stack->undo();
        EXPECT_EQ(Journal{"-a"}, journal);
    }
}

TEST_F(CmUndoGuardFailure, AListenerThatThrowsIsHeardWithTheStepLogged) {
    FunctionHandler listener([] { throw Unexpected("listener"); });
    stack->addChangeCallback(&listener);
    EXPECT_THROW(perform("a"), Unexpected);
    EXPECT_EQ("0 *a", history(*stack));
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    EXPECT_THROW(
        [this] {
            CmUndoGuardNoLog const quiet(false);
            perform("b");
        }(),
        Unexpected);
    stack->removeChangeCallback(&listener);
}

TEST_F(CmUndoGuardFailure, OnlyTheFirstErrorIsSeenAndTheOthersAreLogged) {
    FunctionHandler listener([] { throw Unexpected("listener"); });
    stack->addChangeCallback(&listener);
    auto const callback = RCShdPtr<FunctionHandler>::create([] { throw Unexpected("callback"); });
    LogRecorder const log;
    try {
        CmUndoGuard guard(stack, "Step", {});
        guard.execAndAddUndoCommand(RecordingCommand::create("a", journal));
        CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(callback));
        throw std::logic_error("the first");
    } catch (std::logic_error const& error) {
        EXPECT_STREQ("the first", error.what());
    }
    ASSERT_EQ(2u, log.lines().size());
    EXPECT_NE(std::string::npos, log.lines()[0].find("Errors:0"));
    EXPECT_NE(std::string::npos, log.lines()[0].find("listener"));
    EXPECT_NE(std::string::npos, log.lines()[1].find("callback"));
    EXPECT_EQ("0 *Step", history(*stack));
    stack->removeChangeCallback(&listener);
}

TEST_F(CmUndoGuardFailure, AGuardInsideADestructorThatRunsWhileUnwindingStillThrowsItsOwnErrors) {
    FunctionHandler listener([] { throw Unexpected("listener"); });
    stack->addChangeCallback(&listener);
    struct Cleanup {
        std::function<void()> perform;
        ~Cleanup() { EXPECT_THROW(perform(), Unexpected); }
    };
    EXPECT_THROW(
        [this] {
            Cleanup const cleanup{[this] { perform("a"); }};
            throw std::logic_error("outer");
        }(),
        std::logic_error);
    stack->removeChangeCallback(&listener);
}

TEST_F(CmUndoGuardFailure, AHookThatLeavesAGuardOpenDoesNotKeepTheProcessInside) {
    std::unique_ptr<CmUndoGuard> stray;
    FunctionHandler listener([&] {
        if (!stray) stray = std::make_unique<CmUndoGuard>(stack, "stray", PiExecParam());
    });
    stack->addChangeCallback(&listener);
    EXPECT_THROW(perform("a"), ExAssertionFailed);
    stack->removeChangeCallback(&listener);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    EXPECT_THROW(stray->addUndoCommand(RecordingCommand::create("b", journal)), ExProgramAborted);
    CmUndoGuard* const closed = stray.release();
    EXPECT_THROW(delete closed, ExAssertionFailed);
    EXPECT_EQ("0 *a", history(*stack));
}

TEST_F(CmUndoGuardFailure, AFinalNestedEndWithoutLoggingLosesNothing) {
    perform("a", PiExecParam::BEGIN_TRANSITION);
    perform("b", PiExecParam::BEGIN_TRANSITION);
    perform("c", PiExecParam::END_TRANSITION);
    EXPECT_THROW(CmUndoGuardNoLog(false), ExAssertionFailed);
    EXPECT_EQ(2, stack->getStackHeight());
    journal.clear();
    stack->undo();
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), journal);
}

// Extensions stay registered, so each of these needs a process of its own.
class CmUndoGuardExtensionFailure : public CmUndoGuardFailure {
protected:
    void registerAll() {
        for (auto const& extension : {first, second, third})
            CmUndoGuard::registerUndoGuardExtension(extension);
    }

    RCShdPtr<RecordingExtension> first = RCShdPtr<RecordingExtension>::create("1", journal);
    RCShdPtr<RecordingExtension> second = RCShdPtr<RecordingExtension>::create("2", journal);
    RCShdPtr<RecordingExtension> third = RCShdPtr<RecordingExtension>::create("3", journal);
};

TEST_F(CmUndoGuardExtensionFailure, AtTheEndAllAreToldAndTheStepIsLogged) {
    inChildProcess([this] {
        registerAll();
        third->onEnd = [] { throw Unexpected("end"); };
        EXPECT_THROW(perform("a"), Unexpected);
        EXPECT_EQ((Journal{"begin 1", "begin 2", "begin 3", "+a", "end 3", "end 2", "end 1"}), journal);
        EXPECT_EQ("0 *a", history(*stack));
        third->onEnd = nullptr;
        expectClosed();
    });
}

TEST_F(CmUndoGuardExtensionFailure, AtTheBeginTheGuardIsNotEnteredAndWhatHooksDidIsLogged) {
    inChildProcess([this] {
        registerAll();
        first->onBegin = [this] { perform("h"); };
        second->onBegin = [] { throw Unexpected("begin"); };
        for (PiExecParam::Transition const transition : {PiExecParam::NOT_TRANSITION, PiExecParam::BEGIN_TRANSITION}) {
            journal.clear();
            stack->clear();
            EXPECT_THROW(perform("a", transition), Unexpected);
            char const* const isLong = transition == PiExecParam::NOT_TRANSITION ? "" : "!";
            EXPECT_EQ((Journal{std::string("begin 1") + isLong, "+h", std::string("begin 2") + isLong,
                          std::string("end 1") + isLong}),
                journal);
            EXPECT_EQ("0 *a", history(*stack));
            EXPECT_FALSE(CmUndoGuard::isGuardActive());
        }
        first->onBegin = nullptr;
        second->onBegin = nullptr;
        expectClosed();
    });
}

TEST_F(CmUndoGuardExtensionFailure, AtTheBeginOfTheLastGuardTheLongTransactionGoesOn) {
    inChildProcess([this] {
        registerAll();
        perform("a", PiExecParam::BEGIN_TRANSITION);
        second->onBegin = [] { throw Unexpected("begin"); };
        EXPECT_THROW(perform("b", PiExecParam::END_TRANSITION), Unexpected);
        EXPECT_TRUE(CmUndoGuard::isLongTransition());
        EXPECT_FALSE(CmUndoGuard::isLongTransitionEnding());
        EXPECT_EQ("*0", history(*stack));
        second->onBegin = nullptr;
        perform("", PiExecParam::END_TRANSITION);
        EXPECT_EQ("0 *a", history(*stack)) << "under the description it had";
        expectClosed();
    });
}

} // namespace
