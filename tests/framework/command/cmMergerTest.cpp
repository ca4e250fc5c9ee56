#include "framework/command/cmMerger.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

using namespace Ko;
using namespace KoTest;
using std::chrono::milliseconds;

/// Moves a number, such as a layer's position.
class Nudge : public CmCommand, public CmMergeable, public CmSized {
public:
    Nudge(int& target, int distance, milliseconds time)
        : CmMergeable(Time(time)), _target(target), _distance(distance) {}
    LiString getDescription() const override { return "Nudge"; }
    void const* getMergeTarget() const override { return &_target; }
    bool absorb(CmCommand const& later) override {
        int const more = static_cast<Nudge const&>(later)._distance;
        if (more == 0) return false;
        _distance += more;
        return true;
    }
    std::size_t getMemorySize() const noexcept override { return 100; }

protected:
    void executeInternal() override { _target += _distance; }
    void unexecuteInternal() override { _target -= _distance; }

private:
    int& _target;
    int _distance;
};

class Jump final : public Nudge {
    using Nudge::Nudge;
};

class CmMergerByTimeTest : public testing::Test {
protected:
    CmMergerByTimeTest() { stack->setMerger(CmMergerByTime::create(milliseconds(500))); }

    template <class Command>
    void step(std::vector<RCShdPtr<Command>> const& commands, char const* name = "Nudge") {
        CmUndoGuard guard(stack, name);
        for (RCShdPtr<Command> const& command : commands)
            guard.execAndAddUndoCommand(command);
    }
    template <class Command = Nudge>
    RCShdPtr<Command> nudge(int& target, int milliseconds_, int distance = 1) {
        return RCShdPtr<Command>::create(target, distance, milliseconds(milliseconds_));
    }

    int x = 0, y = 0;
    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();
};

TEST_F(CmMergerByTimeTest, JoinsWhatFollowsQuickly) {
    step<Nudge>({nudge(x, 0)});
    step<Nudge>({nudge(x, 500)});
    stack->executeAndLog(nudge(x, 1000));
    EXPECT_EQ("0 *Nudge", history(*stack));
    stack->undo();
    EXPECT_EQ(0, x);
    stack->redo();
    EXPECT_EQ(3, x);
}

TEST_F(CmMergerByTimeTest, KeepsStepsApartThatTheUserTakesForTwo) {
    struct Row {
        char const* name;
        std::function<void()> between;
    };
    for (Row const& row : {
             Row{"another target", [this] { step<Nudge>({nudge(y, 0)}); }},
             Row{"another class", [this] { step<Jump>({nudge<Jump>(x, 0)}); }},
             Row{"another text", [this] { step<Nudge>({nudge(x, 0)}, "Align"); }},
             Row{"a group",
                 [this] {
                     step<Nudge>({nudge(x, 0), nudge(x, 0)});
                 }},
             Row{"what does not fit", [this] { step<Nudge>({nudge(x, 0, 0)}); }},
             Row{"later", [this] { step<Nudge>({nudge(x, 501)}); }},
             Row{"the clean mark",
                 [this] {
                     stack->setClean();
                     step<Nudge>({nudge(x, 0)});
                 }},
             Row{"a step that was undone",
                 [this] {
                     stack->undo();
                     stack->redo();
                     step<Nudge>({nudge(x, 0)});
                 }},
             Row{"an unlogged change",
                 [this] {
                     stack->commandProcessedNoLog();
                     step<Nudge>({nudge(x, 0)});
                 }},
         }) {
        stack->clear();
        step<Nudge>({nudge(x, 0)});
        row.between();
        EXPECT_EQ(3, stack->getStackHeight()) << row.name;
    }
}

/// Calls a function of the test.
class FunctionMerger : public CmMerger {
public:
    explicit FunctionMerger(std::function<RCShdPtr<CmCommand>()> function) : _function(std::move(function)) {}
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const&, RCShdPtr<CmCommand> const&) override { return _function(); }

private:
    std::function<RCShdPtr<CmCommand>()> _function;
};

TEST(CmMerger, MayThrowChangeTheHistoryOrReleaseItWithoutALostStep) {
    Journal journal;
    auto const command = [&](char const* name) { return RecordingCommand::create(name, journal); };
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    struct Row {
        std::function<RCShdPtr<CmCommand>()> merge;
        char const* expected;
    };
    for (Row const& row : {
             Row{[]() -> RCShdPtr<CmCommand> { throw std::runtime_error("merger"); }, "0 a *b"},
             Row{[&] { return stack->undo(), RCShdPtr<CmCommand>(command("m")); }, "0 *b"},
             Row{[&] { return stack->setMerger(nullptr), RCShdPtr<CmCommand>(command("m")); }, "0 *m"},
             Row{[&] { return stack->clear(), RCShdPtr<CmCommand>(); }, "0 *b"},
         }) {
        stack->clear();
        stack->setMerger(RCShdPtr<FunctionMerger>::create(row.merge));
        stack->log(command("a"));
        stack->log(command("b"));
        EXPECT_EQ(row.expected, history(*stack));
    }
    CmCommandStack* const last = stack.get();
    stack->setMerger(
        RCShdPtr<FunctionMerger>::create([&] { return stack.reset(), RCShdPtr<CmCommand>(command("m")); }));
    last->log(command("c"));
    EXPECT_TRUE(stack.isNull());
}

TEST_F(CmMergerByTimeTest, ABudgetCountsMacrosAndDropsTheOldestButNeverTheNewest) {
    stack->setMerger(nullptr);
    step<Nudge>({nudge(x, 0), nudge(x, 0)}, "Two");
    step<Nudge>({nudge(x, 0)});
    stack->setMaxMemory(250);
    EXPECT_EQ("0 *Nudge", history(*stack));
    EXPECT_EQ(100u, stack->getMemory());
    step<Nudge>({nudge(x, 0), nudge(x, 0), nudge(x, 0)}, "Three");
    EXPECT_EQ("0 *Three", history(*stack));
    EXPECT_EQ(300u, stack->getMemory());
    stack->undo();
    stack->setMaxMemory(1);
    EXPECT_EQ("*0 Three", history(*stack));
}

TEST_F(CmMergerByTimeTest, ABudgetHoldsForTenThousandStepsOfAnySize) {
    class Picture final : public Nudge {
    public:
        Picture(int& target, std::size_t size) : Nudge(target, 1, milliseconds(0)), _size(size) {}
        std::size_t getMemorySize() const noexcept override { return _size; }

    private:
        std::size_t _size;
    };
    constexpr std::size_t budget = 20000;
    stack->setMerger(nullptr);
    stack->setMaxMemory(budget);
    std::mt19937 random(1);
    for (int step = 0; step < 10000; ++step) {
        bool const isGrouped = random() % 4 == 0;
        std::vector<RCShdPtr<Nudge>> commands(isGrouped ? 2 : 1);
        for (RCShdPtr<Nudge>& command : commands)
            command = RCShdPtr<Picture>::create(x, random() % 5000);
        this->step(commands);
        if (random() % 3 == 0) stack->undo();
        std::size_t sum = 0;
        for (auto element = stack->getBegin(); element != stack->getEnd(); ++element)
            sum += CmSized::of(**element);
        ASSERT_EQ(sum, stack->getMemory());
        ASSERT_LE(sum, budget);
    }
    EXPECT_GT(stack->getStackHeight(), 4);
}

TEST_F(CmMergerByTimeTest, TryingReturnsTheOutcomeAndTheError) {
    using Outcome = CmReplay::Outcome;
    EXPECT_EQ(Outcome::NothingToDo, stack->tryUndo().outcome);
    EXPECT_EQ(Outcome::NothingToDo, stack->tryRedo().outcome);
    Journal journal;
    for (char const* const name : {"a", "b", "c"})
        stack->log(RecordingCommand::create(name, journal));
    EXPECT_EQ(Outcome::Done, stack->tryMoveTo(stack->getBegin() + 1).outcome);
    EXPECT_EQ("a|b", stack->getUndoText() + "|" + stack->getRedoText());
    auto& failing = static_cast<RecordingCommand&>(*stack->getBegin()[2]);
    failing.onExecute = [] { throw std::runtime_error("disk full"); };
    CmReplay const result = stack->tryMoveTo(stack->getBegin() + 3);
    EXPECT_EQ(Outcome::Failed, result.outcome);
    EXPECT_STREQ("disk full", result.error->what());
    EXPECT_EQ(2, result.numDropped);
    EXPECT_EQ("0 *a", history(*stack));
}

} // namespace
