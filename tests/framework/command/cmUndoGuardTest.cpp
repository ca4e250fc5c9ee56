#include "framework/command/cmUndoGuard.h"
#include "base/exBase.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingCommand.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
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

TEST_F(CmUndoGuardTest, LogsNothingForAGuardInWhichNothingHappened) {
    perform("", "Nothing", plain);
    EXPECT_EQ("*0", history(*stack));
}

TEST_F(CmUndoGuardTest, CollectsPerformedCommandsAndOnlyExecutesOthers) {
    {
        CmUndoGuard guard(stack, "", plain);
        guard.addUndoCommand(make('a'));
        guard.execUndoCommand(make('b'));
    }
    EXPECT_EQ(Journal{"+b"}, journal);
    EXPECT_EQ("Macro: a", lastDescription());
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

TEST_F(CmUndoGuardTest, FlushesNestedLongTransactionsWithTheOuterOne) {
    perform("a", "Outer", begin);
    perform("b", "Inner", begin);
    perform("c", "", end);
    EXPECT_TRUE(CmUndoGuard::isLongTransitionEnding());
    EXPECT_EQ("*0", history(*stack));
    perform("d", "", plain);
    EXPECT_EQ("0 *Outer", history(*stack));
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

TEST_F(CmUndoGuardTest, RefusesANestedGuardOnAnotherStackOnlyWhereItWouldLog) {
    auto const other = RCShdPtr<CmCommandStack>::create();
    CmUndoGuard const guard(stack, "", plain);
    EXPECT_THROW(CmUndoGuard(other, "", plain), ExAssertionFailed);
    EXPECT_NO_THROW(CmUndoGuard(nullptr, "", plain));
    CmUndoGuardNoLog const quiet(false);
    EXPECT_NO_THROW(CmUndoGuard(other, "", plain));
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

TEST_F(CmUndoGuardTest, LogsWhatListenersAddWhileTheStepIsLoggedAsAFurtherStep) {
    int steps = 0;
    FunctionHandler listener([&] {
        if (++steps <= 2) perform(std::string(1, static_cast<char>('0' + steps)), "", plain);
    });
    stack->addCommandProcessedCallback(&listener);
    perform("a", "Step", plain);
    stack->removeCommandProcessedCallback(&listener);
    EXPECT_EQ("0 Step Step *Step", history(*stack));
    journal.clear();
    while (stack->canUndo())
        stack->undo();
    EXPECT_EQ((Journal{"-2", "-1", "-a"}), journal);
}

TEST_F(CmUndoGuardTest, ListenersMayUndoTheStepThatIsBeingLogged) {
    FunctionHandler listener([&] {
        if (stack->canUndo()) stack->undo();
    });
    stack->addCommandProcessedCallback(&listener);
    perform("a", "Step", plain);
    stack->removeCommandProcessedCallback(&listener);
    EXPECT_EQ("*0 Step", history(*stack));
    EXPECT_EQ((Journal{"+a", "-a"}), journal);
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

// ---- Every transition: what a guard with each parameter does in each state, nested where a guard is open.

enum class Outcome { Enters, Asserts, Aborts };

struct Cell {
    char const* state;
    std::vector<Transition> path;  // outermost guards, opened and closed in turn
    bool open;                     // the last of them stays open
    std::vector<Outcome> outcomes; // for NOT, BEGIN, TRANSITION, END
};

constexpr Outcome enters = Outcome::Enters;
constexpr Outcome asserts = Outcome::Asserts;
constexpr Outcome aborts = Outcome::Aborts;

std::vector<Cell> const& cells() {
    static std::vector<Cell> const table{
        {"OUT_OF_GUARD", {}, false, {enters, enters, aborts, aborts}},
        {"NO_TXN", {plain}, true, {enters, asserts, asserts, asserts}},
        {"BEGIN_TXN", {begin}, true, {enters, enters, asserts, asserts}},
        {"BEGIN_TXN_OFG", {begin}, false, {enters, enters, enters, enters}},
        {"TXN", {begin, step}, true, {enters, asserts, enters, asserts}},
        {"TXN_OFG", {begin, step}, false, {enters, aborts, enters, enters}},
        {"END_TXN", {begin, end}, true, {enters, asserts, asserts, enters}},
        {"END_TXN_OFG", {begin, begin, end}, false, {enters, aborts, aborts, enters}},
    };
    return table;
}

// What can be seen of the guards' state from outside.
std::string visibleState() {
    return std::string(CmUndoGuard::isGuardActive() ? "active " : "") +
           (CmUndoGuard::isLongTransition() ? "long " : "") + (CmUndoGuard::isLongTransitionEnding() ? "ending " : "") +
           (CmUndoGuard::isLogging() ? "logging" : "");
}

class CmUndoGuardTransitions : public CmUndoGuardTest, public testing::WithParamInterface<std::tuple<Cell, int>> {
protected:
    Cell const& cell() const { return std::get<0>(GetParam()); }
    Transition parameter() const { return static_cast<Transition>(std::get<1>(GetParam())); }

    void reach(std::unique_ptr<CmUndoGuard>& open) {
        for (std::size_t index = 0; index < cell().path.size(); ++index) {
            open = std::make_unique<CmUndoGuard>(stack, "", cell().path[index]);
            open->execAndAddUndoCommand(make('p'));
            if (index + 1 < cell().path.size() || !cell().open) open.reset();
        }
    }

    // Ends whatever transaction goes on; tells how many guards that took.
    int finish() {
        int guards = 0;
        for (; CmUndoGuard::isGuardActive() && guards < 9; ++guards)
            perform("", "", end);
        return guards;
    }
};

TEST_P(CmUndoGuardTransitions, AreAsInTheTable) {
    Outcome const expected = cell().outcomes[static_cast<std::size_t>(parameter())];
    std::unique_ptr<CmUndoGuard> open;
    reach(open);
    std::string const before = visibleState();
    std::size_t const collected = journal.size();
    auto const enter = [this] { perform("x", "", parameter()); };
    switch (expected) {
    case enters:
        EXPECT_NO_THROW(enter());
        break;
    case asserts:
        EXPECT_THROW(enter(), ExAssertionFailed);
        break;
    case aborts:
        EXPECT_THROW(enter(), ExProgramAborted);
    }
    if (expected != enters || cell().open) {
        EXPECT_EQ(before, visibleState()) << "a guard that cannot be entered, or that is nested, changes nothing";
    }
    open.reset();
    int const guards = finish();

    // Whatever the way, nothing is lost: all that was executed is undone by the steps that were logged.
    EXPECT_EQ(collected + (expected == enters ? 1 : 0), journal.size());
    std::size_t const executed = journal.size();
    while (stack->canUndo())
        stack->undo();
    EXPECT_EQ(2 * executed, journal.size());
    bool const nestedLong = cell().path.size() == 1 && cell().path[0] == begin && !cell().open && parameter() == begin;
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
    if (nestedLong) {
        EXPECT_EQ(2, guards) << "a long transaction within another needs an end of its own";
    }
}

std::string cellName(testing::TestParamInfo<std::tuple<Cell, int>> const& row) {
    constexpr char const* names[] = {"NOT", "BEGIN", "TRANSITION", "END"};
    return std::string(std::get<0>(row.param).state) + "_" + names[std::get<1>(row.param)];
}

INSTANTIATE_TEST_SUITE_P(
    EveryCell, CmUndoGuardTransitions, testing::Combine(testing::ValuesIn(cells()), testing::Range(0, 4)), cellName);

} // namespace
