#include "base/exBase.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

[[noreturn]] void fail(char const* what) {
    throw std::runtime_error(what);
}

// cmUndoGuardModelTest.cpp tests single errors of commands and listeners.
class CmUndoGuardFailure : public testing::Test {
protected:
    CmUndoGuardFailure() { stack->addChangeCallback(&listener); }
    ~CmUndoGuardFailure() override {
        stack->removeChangeCallback(&listener);
        expectClosed();
    }

    void perform(char const* name, PiExecParam::Transition transition = PiExecParam::NOT_TRANSITION) {
        CmUndoGuard guard(stack, name, transition);
        guard.execAndAddUndoCommand(RecordingCommand::create(name, journal));
    }
    void expectClosed() {
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        int const undoable = stack->getNbUndoableCommands();
        perform("next");
        EXPECT_EQ(undoable + 1, stack->getNbUndoableCommands());
    }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    std::function<void()> onChange = [] {};
    FunctionHandler listener{[this] { onChange(); }};
};

TEST_F(CmUndoGuardFailure, TheFirstErrorIsThrownAndTheOthersAreLogged) {
    onChange = [] { fail("listener"); };
    auto const callback = RCShdPtr<FunctionHandler>::create([] { fail("callback"); });
    LogRecorder const log;
    try {
        CmUndoGuard guard(stack, "Step");
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
}

TEST_F(CmUndoGuardFailure, AGuardInsideADestructorThatRunsWhileUnwindingStillThrowsItsOwnErrors) {
    onChange = [] { fail("listener"); };
    struct Cleanup {
        std::function<void()> perform;
        ~Cleanup() { EXPECT_THROW(perform(), std::runtime_error); }
    };
    EXPECT_THROW(
        [this] {
            Cleanup const cleanup{[this] { perform("a"); }};
            throw std::logic_error("outer");
        }(),
        std::logic_error);
}

TEST_F(CmUndoGuardFailure, AHookThatLeavesAGuardOpenHasItClosedWithTheOutermostOne) {
    std::unique_ptr<CmUndoGuard> stray;
    onChange = [&] {
        if (!stray) stray = std::make_unique<CmUndoGuard>(stack, "stray");
    };
    EXPECT_THROW(perform("a"), ExAssertionFailed);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    EXPECT_THROW(stray->addUndoCommand(RecordingCommand::create("b", journal)), ExProgramAborted);
    CmUndoGuard* const closed = stray.release();
    EXPECT_THROW(delete closed, ExAssertionFailed);
    EXPECT_EQ("0 *a", history(*stack));
    onChange = [] {};
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

TEST_F(CmUndoGuardExtensionFailure, AtTheEndAllAreCalledInReverseAndTheStepIsLogged) {
    inChildProcess([this] {
        registerAll();
        EXPECT_THROW(CmUndoGuard::registerUndoGuardExtension(nullptr), ExNullPtr);
        third->onEnd = [] { fail("end"); };
        EXPECT_THROW(
            [this] {
                CmUndoGuard const outer(stack, "Step");
                perform("a");
            }(),
            std::runtime_error);
        EXPECT_EQ((Journal{"begin 1", "begin 2", "begin 3", "+a", "end 3", "end 2", "end 1"}), journal);
        EXPECT_EQ("0 *Step", history(*stack));
        third->onEnd = nullptr;
        journal.clear();
        perform("b", PiExecParam::BEGIN_TRANSITION);
        perform("c", PiExecParam::END_TRANSITION);
        EXPECT_EQ((Journal{"begin 1!", "begin 2!", "begin 3!", "+b", "end 3!", "end 2!", "end 1!", "begin 1!",
                      "begin 2!", "begin 3!", "+c", "end 3!", "end 2!", "end 1!"}),
            journal);
    });
}

TEST_F(CmUndoGuardExtensionFailure, AtTheBeginTheGuardIsNotEnteredAndCommandsOfHooksAreLogged) {
    inChildProcess([this] {
        registerAll();
        first->onBegin = [this] { perform("h"); };
        second->onBegin = [] { fail("begin"); };
        for (std::string const isLong : {"", "!"}) {
            journal.clear();
            stack->clear();
            EXPECT_THROW(perform("a", isLong.empty() ? PiExecParam::NOT_TRANSITION : PiExecParam::BEGIN_TRANSITION),
                std::runtime_error);
            EXPECT_EQ((Journal{"begin 1" + isLong, "+h", "begin 2" + isLong, "end 1" + isLong}), journal);
            EXPECT_EQ("0 *a", history(*stack));
            EXPECT_FALSE(CmUndoGuard::isGuardActive());
        }
        first->onBegin = second->onBegin = nullptr;
        expectClosed();
    });
}

TEST_F(CmUndoGuardExtensionFailure, AtTheBeginOfTheLastGuardTheLongTransactionContinues) {
    inChildProcess([this] {
        registerAll();
        perform("a", PiExecParam::BEGIN_TRANSITION);
        second->onBegin = [] { fail("begin"); };
        EXPECT_THROW(perform("b", PiExecParam::END_TRANSITION), std::runtime_error);
        EXPECT_TRUE(CmUndoGuard::isLongTransition());
        EXPECT_FALSE(CmUndoGuard::isLongTransitionEnding());
        EXPECT_EQ("*0", history(*stack));
        second->onBegin = nullptr;
        perform("", PiExecParam::END_TRANSITION);
        EXPECT_EQ("0 *a", history(*stack)) << "the description is the one before the guard that failed";
        expectClosed();
    });
}

} // namespace
