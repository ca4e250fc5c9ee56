#include "base/oPtr.h"
#include "framework/command/cmEx.h"
#include "framework/command/cmNullCommand.h"
#include "framework/command/cmRemoveCommand.h"
#include "framework/command/cmTimedCommand.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;
using namespace KoTest;

TEST(CmCommand, SkipsExecutionButNotUnexecutionWhenDisabledOnRedo) {
    Journal journal;
    RCShdPtr<RecordingCommand> const command = RecordingCommand::create("a", journal);
    EXPECT_FALSE(command->getDisableExecutionOnRedo());
    command->setDisableExecutionOnRedo(true);
    CmCommandStack::executeStatic(command);
    CmCommandStack::unexecuteStatic(command);
    EXPECT_EQ(Journal{"-a"}, journal);
}

TEST(CmCommand, DumpsItsDescriptionAsEscapedXml) {
    Journal journal;
    RCShdPtr<CmCommand> const command = RecordingCommand::create("Set <a> & \"b\"", journal);
    std::ostringstream stream;
    command.dump(stream);
    std::string const text = stream.str();
    EXPECT_NE(std::string::npos, text.find("<Command>")) << text;
    EXPECT_NE(std::string::npos, text.find("   <Description>Set &lt;a&gt; &amp; &quot;b&quot;</Description>")) << text;
    EXPECT_NE(std::string::npos, text.find("</Command>")) << text;
}

TEST(CmNullCommand, IsTheInitialStateAndClonesItself) {
    RCShdPtr<CmNullCommand> const command = CmNullCommand::create();
    EXPECT_EQ("Initial State", command->getDescription());
    EXPECT_EQ(0.0, command->getExecutionTime());
    EXPECT_EQ(0.0, command->getUnexecutionTime());
    RCShdPtr<CmCommand> const clone = command->clone();
    EXPECT_FALSE(clone == command);
    EXPECT_EQ("Initial State", clone->getDescription());
}

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
    void unexecuteInternal() override {}
};

TEST(CmTimedCommand, MeasuresTheLastExecutionAlsoWhileItRuns) {
    RCShdPtr<TimedCommand> const command = RCShdPtr<TimedCommand>::create();
    CmCommandStack::executeStatic(command);
    EXPECT_GT(command->duringExecution, 0.0);
    double const measured = command->getExecutionTime();
    EXPECT_GE(measured, command->duringExecution);
    EXPECT_EQ(measured, command->getExecutionTime()) << "a stopped timer stands still";
    EXPECT_EQ(0.0, command->getUnexecutionTime());

    command->setDisableExecutionOnRedo(true);
    CmCommandStack::executeStatic(command);
    EXPECT_LT(command->getExecutionTime(), measured) << "each execution is measured anew";
}

TEST(CmTimedCommand, KeepsRunningWhenTheCommandThrows) {
    RCShdPtr<TimedCommand> const command = RCShdPtr<TimedCommand>::create();
    command->fails = true;
    EXPECT_THROW(CmCommandStack::executeStatic(command), CmEx::ExCommandFailure);
    double const first = command->getExecutionTime();
    while (command->getExecutionTime() == first) {
    }
    EXPECT_GT(command->getExecutionTime(), first);
}

TEST(CmEx, CommandFailureKeepsItsTypeWhenRaisedFromAClone) {
    CmEx::ExCommandFailure const failure("file", 5);
    EXPECT_STREQ("Command un/execution failure.", failure.what());
    OPtr<ExBase> const clone(failure.clone());
    EXPECT_EQ("Ko::CmEx::ExCommandFailure", clone->getTypeName());
    EXPECT_THROW(clone->raise(), CmEx::ExCommandFailure);
}

} // namespace
