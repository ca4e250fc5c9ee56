#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

class CmMacroCommandTest : public testing::Test {
protected:
    RCShdPtr<RecordingCommand> add(char const* name) {
        RCShdPtr<RecordingCommand> const command = RecordingCommand::create(name, journal);
        macro->add(command);
        return command;
    }

    Journal journal;
    RCShdPtr<CmMacroCommand> macro = CmMacroCommand::create();
};

TEST_F(CmMacroCommandTest, DescribesItselfByItsCommandsUnlessNamed) {
    EXPECT_EQ("", macro->getDescription());
    add("Add to Selection");
    add("");
    add("Clear Selection");
    EXPECT_EQ("Macro: Add to Selection; Clear Selection", macro->getDescription());
    macro->setDescription("Pick");
    EXPECT_EQ("Pick", macro->getDescription());
}

TEST_F(CmMacroCommandTest, ExecutesForwardsAndUnexecutesBackwards) {
    add("a");
    add("b");
    add("c");
    CmCommandStack::executeStatic(macro);
    CmCommandStack::unexecuteStatic(macro);
    EXPECT_EQ((Journal{"+a", "+b", "+c", "-c", "-b", "-a"}), journal);
    EXPECT_GT(macro->getExecutionTime(), 0.0);
}

TEST_F(CmMacroCommandTest, StopsAtACommandThatThrows) {
    add("a");
    add("b")->onExecute = [] { throw std::runtime_error("b"); };
    add("c");
    EXPECT_THROW(CmCommandStack::executeStatic(macro), std::runtime_error);
    EXPECT_EQ((Journal{"+a", "+b"}), journal);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

TEST_F(CmMacroCommandTest, CollectsNothingThatItsCommandsDoThroughGuards) {
    auto const stack = RCShdPtr<CmCommandStack>::create();
    add("a")->onExecute = [&] {
        CmUndoGuard guard(stack, "inner", {});
        guard.execAndAddUndoCommand(RecordingCommand::create("nested", journal));
    };
    CmCommandStack::executeStatic(macro);
    EXPECT_EQ((Journal{"+a", "+nested"}), journal);
    EXPECT_EQ("*0", history(*stack));
}

TEST_F(CmMacroCommandTest, GivesBackItsLastCommand) {
    RCShdPtr<CmCommand> const first = add("a");
    RCShdPtr<CmCommand> const last = add("b");
    EXPECT_TRUE(macro->removeLast() == last);
    EXPECT_TRUE(macro->removeLast() == first);
    EXPECT_TRUE(macro->isEmpty());
}

TEST_F(CmMacroCommandTest, DumpsNestedMacrosWithoutEmptyDescriptions) {
    RCShdPtr<CmMacroCommand> const outer = CmMacroCommand::create();
    add("a");
    outer->setDescription("Outer");
    outer->add(macro);
    std::ostringstream stream;
    outer.dump(stream);
    EXPECT_EQ("<MacroCommand>\n"
              "   <Description>Outer</Description>\n"
              "   <MacroCommand>\n"
              "      <Command>\n"
              "         <Description>a</Description>\n"
              "      </Command>\n"
              "   </MacroCommand>\n"
              "</MacroCommand>\n",
        stream.str());
}

} // namespace
