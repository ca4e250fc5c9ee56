#include "framework/command/cmEx.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmTimedCommand.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

class TimedCommand : public CmTimedCommand {
public:
    LiString getDescription() const override { return "timed"; }
    double duringExecution = -1.0;
    double atUnexecution = -1.0;
    double leastUnexecution = 0.001;
    bool fails = false;

protected:
    void executeInternal() override {
        while ((duringExecution = getExecutionTime()) == 0.0) {
        }
        if (fails) throw CmEx::ExCommandFailure("source", 1);
    }
    void unexecuteInternal() override {
        atUnexecution = getUnexecutionTime();
        while (getUnexecutionTime() <= atUnexecution + leastUnexecution) {
        }
    }
};

TEST(CmTimedCommand, MeasuresTheLastExecutionAlsoWhileItRuns) {
    RCShdPtr<TimedCommand> const command = RCShdPtr<TimedCommand>::create();
    CmCommandStack::executeStatic(command);
    EXPECT_GT(command->duringExecution, 0.0);
    double const measured = command->getExecutionTime();
    EXPECT_GE(measured, command->duringExecution);
    EXPECT_EQ(measured, command->getExecutionTime()) << "a stopped timer stands still";
    CmCommandStack::unexecuteStatic(command);
    double const unexecution = command->getUnexecutionTime();
    EXPECT_GT(unexecution, 0.0);
    EXPECT_EQ(unexecution, command->getUnexecutionTime()) << "a stopped timer stands still";
    EXPECT_EQ(measured, command->getExecutionTime()) << "by a timer of its own";
    // One that was not interrupted by other processes is enough.
    for (int tries = 0; tries < 1000 && (tries == 0 || command->atUnexecution >= unexecution); ++tries)
        CmCommandStack::unexecuteStatic(command);
    EXPECT_LT(command->atUnexecution, unexecution) << "each unexecution is measured anew";

    command->setDisableExecutionOnRedo(true);
    CmCommandStack::executeStatic(command);
    EXPECT_LT(command->getExecutionTime(), measured) << "each execution is measured anew";
}

TEST(CmTimedCommand, KeepsRunningWhenTheCommandThrows) {
    RCShdPtr<TimedCommand> const command = RCShdPtr<TimedCommand>::create();
    command->fails = true;
    EXPECT_EQ("Command un/execution failure. [source]",
        thrownBy<CmEx::ExCommandFailure>([&] { CmCommandStack::executeStatic(command); }));
    double const first = command->getExecutionTime();
    while (command->getExecutionTime() <= first) {
    }
}

TEST(CmMacroCommand, DescribesItselfByItsCommandsUnlessNamed) {
    Journal journal;
    auto const macro = CmMacroCommand::create();
    EXPECT_EQ("", macro->getDescription());
    for (char const* const name : {"Add to Selection", "", "Clear Selection"})
        macro->add(RecordingCommand::create(name, journal));
    EXPECT_EQ("Macro: Add to Selection; Clear Selection", macro->getDescription());
    macro->setDescription("Pick");
    EXPECT_EQ("Pick", macro->getDescription());
    EXPECT_EQ("Clear Selection", macro->removeLast()->getDescription());
    macro->setDescription("");
    EXPECT_EQ("Macro: Add to Selection", macro->getDescription());
}

TEST(CmMacroCommand, KeepsItsListWhileItRuns) {
    Journal journal;
    auto const macro = CmMacroCommand::create();
    EXPECT_EQ("!isEmpty() [framework\\command\\src\\cmMacroCommand]", thrownBy([&] { macro->removeLast(); }));
    auto const command = RecordingCommand::create("a", journal);
    macro->add(command);
    std::function<void()> const changes[] = {[&] { macro->add(command); }, [&] { macro->removeLast(); },
        [&] { macro->clear(); }, [&] { macro->makeRoom(100); }};
    for (auto const& change : changes) {
        command->onExecute = command->onUnexecute = [&] {
            EXPECT_EQ("!isRunning() [framework\\command\\src\\cmMacroCommand]", thrownBy(change));
        };
        CmCommandStack::executeStatic(macro);
        CmCommandStack::unexecuteStatic(macro);
    }
    macro->add(RecordingCommand::create("b", journal));
    EXPECT_EQ(2, macro->getSize());
}

TEST(CmMacroCommand, CollectsNothingThatItsCommandsDoThroughGuards) {
    Journal journal;
    auto const stack = RCShdPtr<CmCommandStack>::create();
    auto const macro = CmMacroCommand::create();
    auto const command = RecordingCommand::create("a", journal);
    command->onExecute = command->onUnexecute = [&] {
        CmUndoGuard guard(stack, "inner");
        guard.execAndAddUndoCommand(RecordingCommand::create("nested", journal));
    };
    macro->add(command);
    CmCommandStack::executeStatic(macro);
    CmCommandStack::unexecuteStatic(command);
    EXPECT_EQ((Journal{"+a", "+nested", "-a", "+nested"}), journal);
    EXPECT_EQ("*0", history(*stack));
    EXPECT_GT(macro->getExecutionTime(), 0.0);
}

} // namespace
