#include "framework/command/cmSelectionChangeCmd.h"
#include "base/exBase.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/items.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;
using WithItems = CmSelectionChangeWithItemsCmd;

RCShdPtr<CmCommand> withItems(RCShdPtr<SnSelection> const& selection, int type) {
    return WithItems::create(selection, selectionOf({"b", "x"}), static_cast<WithItems::Type>(type));
}
RCShdPtr<CmCommand> single(RCShdPtr<SnSelection> const& selection, char const* item, int type) {
    return CmSelectionChangeCmd::create(selection, text(item), static_cast<CmSelectionChangeCmd::Type>(type));
}

struct Row {
    char const* name;
    std::function<RCShdPtr<CmCommand>(RCShdPtr<SnSelection> const&)> create;
    char const* description;
    char const* executed;
    char const* undone;
    // Where the selection was changed by somebody else before the undo, who put "z" in place of all.
    char const* undoneMeanwhile;
};

// Every command is made for "a b c".
Row const rows[] = {
    {"add items", [](auto const& s) { return withItems(s, 0); }, "Add to Selection", "a b c x", "a b c", "a b c"},
    {"remove items", [](auto const& s) { return withItems(s, 1); }, "Remove from Selection", "a c", "a b c", "a b c"},
    {"toggle items", [](auto const& s) { return withItems(s, 2); }, "Toggle Selection", "a c x", "a b c", "a b c"},
    {"replace all",
        [](auto const& s) {
            return CmSelectionReplaceAllItemsCmd::create(s, selectionOf({"x", "b"}));
        },
        "Replace Selection", "x b", "a b c", "a b c"},
    {"clear", [](auto const& s) { return CmSelectionClearCmd::create(s); }, "Clear Selection", "", "a b c", "a b c"},
    {"add one", [](auto const& s) { return single(s, "x", 0); }, "Change Selection", "a b c x", "a b c", "z"},
    {"remove one", [](auto const& s) { return single(s, "b", 1); }, "Change Selection", "a c", "a c b", "z b"},
    {"any other type removes one", [](auto const& s) { return single(s, "b", -7); }, "Change Selection", "a c", "a c b",
        "z b"},
};

TEST(CmSelectionChangeCmd, ChangesTheSelectionAndTakesItBack) {
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const stack = RCShdPtr<CmCommandStack>::create();
        auto const selection = selectionOf({"a", "b", "c"});
        {
            CmUndoGuard guard(stack, row.name, {});
            guard.execAndAddUndoCommand(row.create(selection));
        }
        EXPECT_EQ(row.executed, content(*selection));
        stack->undo();
        EXPECT_EQ(row.undone, content(*selection));
        stack->redo();
        EXPECT_EQ(row.executed, content(*selection));
        selection->replace(*selectionOf({"z"}));
        stack->undo();
        EXPECT_EQ(row.undoneMeanwhile, content(*selection));
        EXPECT_EQ(row.description, row.create(selection)->getDescription());
    }
}

TEST(CmSelectionChangeCmd, AbortsForAnUnknownTypeOnceItIsUsed) {
    auto const selection = selectionOf({"a", "b"});
    RCShdPtr<CmCommand> const command = withItems(selection, 3);
    try {
        command->getDescription();
        ADD_FAILURE();
    } catch (ExProgramAborted const& error) {
        EXPECT_STREQ("framework\\command\\src\\cmSelectionChangeCmd", error.getFile());
    }
    EXPECT_THROW(CmCommandStack::executeStatic(command), ExProgramAborted);
    EXPECT_EQ("a b", content(*selection));
}

} // namespace
