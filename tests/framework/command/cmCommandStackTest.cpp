#include "framework/command/cmCommandStack.h"
#include "base/exBase.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmNullCommand.h"
#include "tests/support/logRecorder.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

// cmUndoGuardModelTest.cpp tests the history after each operation and the calls of listeners.
class CmCommandStackTest : public testing::Test {
protected:
    RCShdPtr<RecordingCommand> make(std::string name) { return RecordingCommand::create(std::move(name), journal); }
    void logAll(std::string const& names) {
        for (char const name : names)
            stack->log(make(std::string(1, name)));
    }
    RCShdPtr<RecordingCommand> at(int index) { return (stack->getBegin() + index)->dynamicCast<RecordingCommand>(); }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmCommandStackTest, RefusesWhatItCannotDo) {
    RCShdPtr<RecordingCommand> const disabled = make("a");
    disabled->setDisableExecutionOnRedo(true);
    std::pair<char const*, std::function<void()>> const rows[] = {{"canUndo()", [&] { stack->undo(); }},
        {"canRedo()", [&] { stack->redo(); }}, {"height >= 2", [&] { stack->setMaxStackHeight(1); }},
        {"target != _stack.end()", [&] { stack->moveTo(stack->getEnd()); }},
        {"!cmd->getDisableExecutionOnRedo()", [&] { stack->executeAndLog(disabled); }}};
    for (auto const& [condition, operation] : rows)
        EXPECT_EQ(condition + std::string(" [framework\\command\\src\\cmCommandStack]"), thrownBy(operation));
    EXPECT_THROW(stack->log(nullptr), ExNullPtr);
    EXPECT_THROW(stack->executeAndLog(nullptr), ExNullPtr);
    EXPECT_EQ(1000, stack->getMaxStackHeight());
    EXPECT_EQ("*0", history(*stack));
}

TEST_F(CmCommandStackTest, LogsEachOperationAndItsFailure) {
    logAll("12");
    LogRecorder const log(6);
    FunctionHandler thrower([] { throw std::logic_error("listener"); });
    stack->addChangeCallback(&thrower);
    EXPECT_THROW(stack->executeAndLog(make("3")), std::logic_error) << "the error of a listener";
    at(3)->onUnexecute = [this] {
        EXPECT_EQ(PiCommandStack::Undoing, stack->getState());
        throw CmEx::ExCommandFailure("source", 1);
    };
    EXPECT_THROW(stack->undo(), std::logic_error);
    stack->removeChangeCallback(&thrower);
    logAll("4");
    stack->undo();
    at(1)->onExecute = [this] {
        EXPECT_EQ(PiCommandStack::Redoing, stack->getState());
        throw std::runtime_error("unexpected");
    };
    stack->addChangeCallback(&thrower);
    EXPECT_THROW(stack->redo(), std::runtime_error) << "the error of the command comes first";
    stack->removeChangeCallback(&thrower);
    ASSERT_EQ(8u, log.lines().size());
    EXPECT_NE(std::string::npos, log.lines()[7].find("listener"));
    EXPECT_EQ((Journal{"Commands:6 Executed 3", "Commands:6 Undoing 3", "Commands:2 Undoing 3 failed.\n",
                  "Commands:6 Executed 4", "Commands:6 Undoing 4", "Commands:6 Redoing 4",
                  "Commands:0 Redoing 4 failed unexpectedly\n"}),
        Journal(log.lines().begin(), log.lines().end() - 1));
}

TEST_F(CmCommandStackTest, MayBeReleasedByAListener) {
    auto released = RCShdPtr<CmCommandStack>::create();
    CmCommandStack& reference = *released;
    FunctionHandler release([&] { released.reset(); });
    FunctionHandler after([] { FAIL() << "called after the stack was destroyed"; });
    reference.addCommandProcessedCallback(&release);
    reference.addCommandProcessedCallback(&after);
    reference.addChangeCallback(&after);
    reference.log(make("a"));
    EXPECT_TRUE(released.isNull());
}

TEST_F(CmCommandStackTest, MoveToEndsAtItsTargetAlsoIfAListenerReleasesTheStack) {
    logAll("abc");
    CmCommandStack& moved = *stack;
    FunctionHandler release([this] { stack.reset(); });
    moved.addChangeCallback(&release);
    moved.moveTo(moved.getBegin());
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), journal);
}

// X of the history "0 1 *X 3" is undone or redone.
TEST_F(CmCommandStackTest, ACommandThatChangesItsHistoryHasFailedAndWhatItLoggedStays) {
    struct Row {
        bool isRedo;
        std::function<void()> change;
        char const* expected;
    };
    auto const clear = [this] { stack->clear(); };
    auto const log = [this] { logAll("C"); };
    auto const trim = [this] { stack->setMaxStackHeight(2); };
    auto const removeLast = [this] { stack->removeLast(); };
    Row const rows[] = {{true, clear, "*0"}, {true, log, "0 1 *C"}, {true, trim, "*0"}, {true, removeLast, "0 *1"},
        {true, [this] { stack->undo(); }, "0 *1"}, {true, [this] { stack->moveTo(stack->getBegin()); }, "*0 1"},
        {true, [&] { clear(), log(); }, "0 *C"}, {true, [&] { removeLast(), removeLast(); }, "0 *1"},
        {false, clear, "*0"}, {false, log, "0 *C"}, {false, trim, "*0 3"}, {false, removeLast, "*0"},
        {false, [&] { clear(), log(); }, "0 *C"}};
    for (std::string const thrown : {"nothing", "the expected", "another"})
        for (Row const& row : rows) {
            stack = RCShdPtr<CmCommandStack>::create();
            logAll("1X3");
            stack->moveTo(stack->getBegin() + (row.isRedo ? 1 : 2));
            (row.isRedo ? at(2)->onExecute : at(2)->onUnexecute) = [&] {
                row.change();
                if (thrown == "the expected") throw CmEx::ExCommandFailure("source", 1);
                if (thrown == "another") throw std::runtime_error(thrown);
            };
            std::string caught = "the expected";
            try {
                row.isRedo ? stack->redo() : stack->undo();
            } catch (std::exception const& error) {
                caught = error.what();
            }
            EXPECT_EQ(thrown == "nothing" ? "isUntouched(position)" : thrown, caught);
            EXPECT_EQ(row.expected, history(*stack)) << thrown << ", row " << &row - rows;
            EXPECT_EQ(PiCommandStack::Idle, stack->getState());
        }
}

// The history is "0 1 *2 3" of at most four elements.
TEST_F(CmCommandStackTest, DroppedCommandsAreDestroyedWhenTheHistoryIsWhole) {
    struct Row {
        std::function<void()> drop;
        char const* seen;
        char const* logged;
    };
    auto const fail = [] { throw CmEx::ExCommandFailure("source", 1); };
    Row const rows[] = {{[this] { stack->clear(); }, "*0", "0 *d"},
        {[this] { stack->removeLast(); }, "0 1 *2", "0 1 2 *d"},
        {[this] { stack->setMaxStackHeight(3); }, "0 *2 3", "0 2 *d"},
        {[this] { logAll("n"); }, "0 1 2 *n", "0 2 n *d"},
        {[this] { stack->redo(), logAll("n"); }, "0 2 3 *n", "0 3 n *d"},
        {[&] { at(2)->onUnexecute = fail, stack->undo(); }, "*0 3", "0 *d"},
        {[&] { at(3)->onExecute = fail, stack->redo(); }, "0 1 *2", "0 1 2 *d"}};
    std::function<void()> const reactions[] = {
        [] {}, [this] { logAll("d"); }, [this] { stack->clear(); }, [this] { stack.reset(); }};
    for (Row const& row : rows)
        for (auto const& reaction : reactions) {
            stack = RCShdPtr<CmCommandStack>::create();
            logAll("123");
            stack->undo();
            stack->setMaxStackHeight(4);
            std::string seen;
            for (int const index : {1, 2, 3})
                at(index)->onDestroy = [&, once = true]() mutable {
                    if (!std::exchange(once, false) || !seen.empty() || stack.isNull()) return;
                    seen = history(*stack);
                    reaction();
                };
            row.drop();
            EXPECT_EQ(row.seen, seen);
            char const* const expected[] = {row.seen, row.logged, "*0", ""};
            EXPECT_EQ(expected[&reaction - reactions], stack ? history(*stack) : "");
            seen = "done";
            stack.reset(); // before the journal, to which the commands refer
        }
}

TEST_F(CmCommandStackTest, MayBeReleasedByACommandWhichMayReleaseItself) {
    for (std::string const operation : {"undo", "redo", "executeAndLog", "clear"}) {
        journal.clear();
        stack = RCShdPtr<CmCommandStack>::create();
        logAll("12");
        RCShdPtr<CmCommand> command = operation == "executeAndLog" ? make("x") : at(2);
        RecordingCommand& recording = *command.dynamicCast<RecordingCommand>();
        if (operation == "redo") stack->undo();
        CmCommandStack& released = *stack;
        recording.onExecute = recording.onUnexecute = recording.onDestroy = [&] {
            command.reset();
            stack.reset();
            journal.push_back("released");
        };
        if (operation == "executeAndLog") released.executeAndLog(command);
        command.reset();
        if (operation == "undo") released.undo();
        if (operation == "redo") released.redo();
        if (operation == "clear") released.clear();
        EXPECT_TRUE(stack.isNull());
    }
}

TEST_F(CmCommandStackTest, DumpsItsHistoryMarkingTheCurrentCommand) {
    auto const macro = CmMacroCommand::create(), inner = CmMacroCommand::create();
    inner->add(make("Set <a> & \"b\""));
    macro->setDescription("Outer");
    macro->add(inner);
    stack->log(macro);
    stack->log(CmNullCommand::create()->clone());
    stack->undo();
    std::stringstream unnamed, stream;
    stack.dump(unnamed);
    EXPECT_EQ(std::string::npos, unnamed.str().find("<Name>"));
    stack->setName("Scene & more");
    stack.dump(stream);
    std::string joined;
    for (std::string line; std::getline(stream, line);)
        joined += line.substr(line.find_first_not_of(' '));
    EXPECT_EQ("<CommandStack><Name>Scene &amp; more</Name>"
              "<Command><Description>Initial State</Description></Command>"
              "<MacroCommand><Description>Outer</Description><MacroCommand>"
              "<Command><Description>Set &lt;a&gt; &amp; &quot;b&quot;</Description></Command>"
              "</MacroCommand></MacroCommand><Current></Current>"
              "<Command><Description>Initial State</Description></Command></CommandStack>",
        joined);
}

} // namespace
