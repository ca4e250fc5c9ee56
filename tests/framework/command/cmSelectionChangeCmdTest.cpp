#include "framework/command/cmSelectionChangeCmd.h"
#include "base/exBase.h"
#include "framework/command/cmCommandStack.h"
#include "tests/support/items.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;
using WithItems = CmSelectionChangeWithItemsCmd;

// What the commands do: cmSelectionModelTest.cpp.
TEST(CmSelectionChangeCmd, AbortsForAnUnknownTypeOnceItIsUsed) {
    auto const selection = selectionOf({"a", "b"});
    RCShdPtr<CmCommand> const command =
        WithItems::create(selection, selectionOf({"b", "x"}), static_cast<WithItems::Type>(3));
    EXPECT_THROW(command->getDescription(), ExProgramAborted);
    EXPECT_THROW(CmCommandStack::executeStatic(command), ExProgramAborted);
    EXPECT_EQ("a b", content(*selection));
    CmCommandStack::executeStatic(
        CmSelectionChangeCmd::create(selection, text("b"), static_cast<CmSelectionChangeCmd::Type>(-7)));
    EXPECT_EQ("a", content(*selection)) << "of one item, any other type removes it";
}

} // namespace
