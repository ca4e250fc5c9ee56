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
    bool fails = false;

protected:
    void executeInternal() override {
        while ((duringExecution = getExecutionTime()) == 0.0) {
        }
        if (fails) throw CmEx::ExCommandFailure("source", 1);
    }
    void unexecuteInternal() override {
        while (getUnexecutionTime() == 0.0) {
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
    EXPECT_GT(command->getUnexecutionTime(), 0.0);

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

TEST(CmMacroCommand, CollectsNothingThatItsCommandsDoThroughGuards) {
    Journal journal;
    auto const stack = RCShdPtr<CmCommandStack>::create();
    auto const macro = CmMacroCommand::create();
    auto const command = RecordingCommand::create("a", journal);
    command->onExecute = command->onUnexecute = [&] {
        CmUndoGuard guard(stack, "inner", {});
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
