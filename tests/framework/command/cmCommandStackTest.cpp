#include "framework/command/cmCommandStack.h"
#include "base/assertions.h"
#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmUndoGuard.h"
#include "resmgt/lgGroups.h"
#include "tests/support/logRecorder.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

class CmCommandStackTest : public testing::Test {
protected:
    CmCommandStackTest() {
        stack->addCommandProcessedCallback(&processed);
        stack->addChangeCallback(&changed);
    }
    ~CmCommandStackTest() override {
        stack->removeCommandProcessedCallback(&processed);
        stack->removeChangeCallback(&changed);
    }

    RCShdPtr<RecordingCommand> make(std::string name) { return RecordingCommand::create(std::move(name), journal); }
    void logAll(std::string const& names) {
        for (char const name : names)
            stack->log(make(std::string(1, name)));
    }
    void undo(int times) {
        while (times-- > 0)
            stack->undo();
    }
    RCShdPtr<RecordingCommand> at(int index) { return (stack->getBegin() + index)->dynamicCast<RecordingCommand>(); }
    // What listeners heard since the last time: "P" for processed, "C" for changed, each with the history they saw.
    std::string heard() { return std::exchange(_heard, {}); }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();

private:
    std::string _heard;

protected:
    FunctionHandler processed{[this] { _heard += "P(" + history(*stack) + ")"; }};
    FunctionHandler changed{[this] { _heard += "C(" + history(*stack) + ")"; }};
};

template <class Call>
std::string assertionOf(Call call) {
    try {
        call();
    } catch (ExAssertionFailed const& error) {
        EXPECT_STREQ("framework\\command\\src\\cmCommandStack", error.getFile());
        return error.what();
    }
    return "nothing was raised";
}

TEST_F(CmCommandStackTest, StartsWithTheInitialStateAlone) {
    EXPECT_EQ(1, stack->getStackHeight());
    EXPECT_EQ(1000, stack->getMaxStackHeight());
    EXPECT_EQ(0, stack->getNbUndoableCommands());
    EXPECT_EQ("Initial State", (*stack->getCurrent())->getDescription());
    EXPECT_EQ(PiCommandStack::Idle, stack->getState());
    EXPECT_EQ("canUndo()", assertionOf([&] { stack->undo(); }));
    EXPECT_EQ("canRedo()", assertionOf([&] { stack->redo(); }));
    stack->removeLast();
    EXPECT_EQ("", heard());
}

TEST_F(CmCommandStackTest, LogsUndoesAndRedoesTellingProcessedBeforeChanged) {
    stack->executeAndLog(make("a"));
    EXPECT_EQ("P(0 *a)C(0 *a)", heard());
    stack->log(make("b"));
    EXPECT_EQ("P(0 a *b)C(0 a *b)", heard());
    stack->undo();
    EXPECT_EQ("P(0 *a b)C(0 *a b)", heard());
    stack->redo();
    EXPECT_EQ("P(0 a *b)C(0 a *b)", heard());
    EXPECT_EQ((Journal{"+a", "-b", "+b"}), journal);
    stack->commandProcessedNoLog();
    EXPECT_EQ("P(0 a *b)C(0 a *b)", heard());
}

TEST_F(CmCommandStackTest, RefusesWhatItCannotLog) {
    RCShdPtr<RecordingCommand> const disabled = make("a");
    disabled->setDisableExecutionOnRedo(true);
    EXPECT_EQ("!cmd->getDisableExecutionOnRedo()", assertionOf([&] { stack->executeAndLog(disabled); }));
    EXPECT_THROW(stack->log(nullptr), ExNullPtr);
    EXPECT_THROW(stack->executeAndLog(nullptr), ExNullPtr);
    RCShdPtr<RecordingCommand> const failing = make("b");
    failing->onExecute = [] { throw CmEx::ExCommandFailure("source", 1); };
    EXPECT_THROW(stack->executeAndLog(failing), CmEx::ExCommandFailure);
    EXPECT_EQ("*0", history(*stack));
    EXPECT_EQ("", heard());
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

TEST_F(CmCommandStackTest, TrimsToALowerHeightOrClearsWhatItCannotTrim) {
    struct Row {
        int undone;
        int height;
        char const* expected;
        bool tells;
    };
    for (Row const& row : {Row{0, 5, "0 1 2 3 *4", false}, Row{0, 4, "0 2 3 *4", true}, Row{0, 2, "0 *4", true},
             Row{1, 3, "0 *3 4", true}, Row{2, 3, "*0 3 4", true}, Row{2, 2, "*0", true}, Row{4, 4, "*0", true}}) {
        stack->setMaxStackHeight(1000);
        stack->clear();
        logAll("1234");
        undo(row.undone);
        heard();
        stack->setMaxStackHeight(row.height);
        EXPECT_EQ(row.expected, history(*stack)) << row.undone << " undone, height " << row.height;
        EXPECT_EQ(row.tells ? std::string("C(") + row.expected + ")" : "", heard());
        EXPECT_EQ(row.height, stack->getMaxStackHeight());
    }
    EXPECT_EQ("height >= 2", assertionOf([&] { stack->setMaxStackHeight(1); }));
    EXPECT_EQ(4, stack->getMaxStackHeight());
}

TEST_F(CmCommandStackTest, MovesStepByStepToAnyElement) {
    logAll("123");
    heard();
    stack->moveTo(stack->getBegin() + 1);
    EXPECT_EQ("P(0 1 *2 3)C(0 1 *2 3)P(0 *1 2 3)C(0 *1 2 3)", heard());
    stack->moveTo(stack->getBegin() + 3);
    EXPECT_EQ("0 1 2 *3", history(*stack));
    EXPECT_EQ((Journal{"-3", "-2", "+2", "+3"}), journal);
    at(2)->onUnexecute = [] { throw CmEx::ExCommandFailure("source", 1); };
    stack->moveTo(stack->getBegin());
    EXPECT_EQ("*0 3", history(*stack)) << "stops where history was dropped";
    EXPECT_EQ("target != _stack.end()", assertionOf([&] { stack->moveTo(stack->getEnd()); }));
}

// What fails, how, and what is left of "0 1 2 3 4": an undo of 3 drops what is older, a redo of 3 what is newer.
struct Failure {
    char const* name;
    bool undo;
    bool expected;
    char const* left;
    char const* line;
};

class CmCommandStackFailure : public CmCommandStackTest, public testing::WithParamInterface<Failure> {};

TEST_P(CmCommandStackFailure, DropsTheHistoryThatCannotBeTrusted) {
    Failure const& failure = GetParam();
    logAll("1234");
    undo(failure.undo ? 1 : 2);
    auto const fail = [this, &failure] {
        EXPECT_EQ(failure.undo ? PiCommandStack::Undoing : PiCommandStack::Redoing, stack->getState());
        if (failure.expected) throw CmEx::ExCommandFailure("source", 1);
        throw std::runtime_error("unexpected");
    };
    at(3)->onExecute = fail;
    at(3)->onUnexecute = fail;
    heard();
    LogRecorder const log;
    auto const step = [&] { failure.undo ? stack->undo() : stack->redo(); };
    if (failure.expected)
        EXPECT_NO_THROW(step());
    else
        EXPECT_THROW(step(), std::runtime_error);
    std::string const left = failure.left;
    EXPECT_EQ(left, history(*stack));
    EXPECT_EQ("P(" + left + ")C(" + left + ")", heard());
    EXPECT_EQ(PiCommandStack::Idle, stack->getState());
    EXPECT_EQ(Journal{failure.line}, log.lines());
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    stack->log(make("5"));
    EXPECT_TRUE(stack->canUndo());
}

INSTANTIATE_TEST_SUITE_P(Table, CmCommandStackFailure,
    testing::Values(Failure{"undoExpected", true, true, "*0 4", "Commands:2 Undoing 3 failed.\n"},
        Failure{"undoUnexpected", true, false, "*0 4", "Commands:0 Undoing 3 failed unexpectedly\n"},
        Failure{"redoExpected", false, true, "0 1 *2", "Commands:2 Redoing 3 failed.\n"},
        Failure{"redoUnexpected", false, false, "0 1 *2", "Commands:0 Redoing 3 failed unexpectedly\n"}),
    [](auto const& row) { return row.param.name; });

TEST_F(CmCommandStackTest, TellsAllListenersAndDoesItsWorkWhenOneThrows) {
    FunctionHandler thrower([] { throw std::runtime_error("listener"); });
    stack->addCommandProcessedCallback(&thrower);
    FunctionHandler last([this] { journal.push_back("last"); });
    stack->addCommandProcessedCallback(&last);
    LogRecorder const log;
    EXPECT_THROW(stack->executeAndLog(make("a")), std::runtime_error);
    EXPECT_EQ("P(0 *a)C(0 *a)", heard());
    EXPECT_THROW(stack->undo(), std::runtime_error);
    EXPECT_THROW(stack->redo(), std::runtime_error);
    EXPECT_EQ("P(*0 a)C(*0 a)P(0 *a)C(0 *a)", heard());
    EXPECT_EQ((Journal{"+a", "last", "-a", "last", "+a", "last"}), journal);
    EXPECT_EQ(PiCommandStack::Idle, stack->getState());
    EXPECT_EQ(Journal{}, log.lines()) << "the caller has the exception";

    at(1)->onUnexecute = [] { throw std::logic_error("command"); };
    EXPECT_THROW(stack->undo(), std::logic_error) << "the first error is the one that is seen";
    EXPECT_EQ(2u, log.lines().size());
    stack->removeCommandProcessedCallback(&thrower);
    stack->removeCommandProcessedCallback(&last);
}

TEST_F(CmCommandStackTest, MayBeReleasedByAListener) {
    auto released = RCShdPtr<CmCommandStack>::create();
    CmCommandStack& reference = *released;
    FunctionHandler release([&] { released.reset(); });
    FunctionHandler after([] { FAIL() << "of a stack that is gone"; });
    reference.addCommandProcessedCallback(&release);
    reference.addCommandProcessedCallback(&after);
    reference.addChangeCallback(&after);
    reference.log(make("a"));
    EXPECT_TRUE(released.isNull());
}

TEST_F(CmCommandStackTest, RefusesACommandThatChangesTheHistoryWhileItIsUndone) {
    logAll("12");
    at(2)->onUnexecute = [this] { stack->clear(); };
    EXPECT_THROW(stack->undo(), ExAssertionFailed);
    EXPECT_EQ("*0", history(*stack));
}

TEST_F(CmCommandStackTest, WritesLogLinesOnlyWhereTheirLevelIsOn) {
    LogRecorder const log(6);
    stack->executeAndLog(make("a"));
    stack->undo();
    stack->redo();
    EXPECT_EQ((Journal{"Commands:6 Executed a", "Commands:6 Undoing a", "Commands:6 Redoing a"}), log.lines());
}

TEST_F(CmCommandStackTest, DumpsItsHistoryMarkingTheCurrentCommand) {
    stack->setName("Scene & more");
    logAll("12");
    stack->undo();
    std::ostringstream stream;
    stack.dump(stream);
    std::string const text = stream.str();
    EXPECT_NE(std::string::npos, text.find("<Name>Scene &amp; more</Name>")) << text;
    EXPECT_LT(text.find("<Description>1<"), text.find("<Current")) << text;
    EXPECT_LT(text.find("<Current"), text.find("<Description>2<")) << text;
}

} // namespace
