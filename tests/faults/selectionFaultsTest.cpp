#include "framework/command/cmCommandStack.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/items.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

class SelectionFaults : public FaultsTest {};

// Of as many items as are given, every other one is selected; in order.
RCShdPtr<SnSelection> numbers(int first, int last) {
    auto const selection = SnSelection::create();
    for (int number = first; number <= last; number += 2)
        selection->add(text(std::to_string(number).c_str()));
    return selection;
}

// It can still do everything, and finds what it has.
void expectUsable(SnSelection& selection) {
    for (auto const& item : selection.getItems()) {
        EXPECT_TRUE(selection.contains(*item));
        EXPECT_FALSE(selection.add(item));
    }
    auto const other = text("another one");
    EXPECT_TRUE(selection.add(other));
    EXPECT_TRUE(selection.remove(other));
    for (auto const& item : selection.getItems())
        EXPECT_TRUE(selection.remove(item));
    EXPECT_TRUE(selection.isEmpty());
}

struct Change {
    char const* name;
    std::function<void(SnSelection& selection, SnSelection const& others)> apply;
};

Change const changes[] = {
    {"add one", [](SnSelection& selection, SnSelection const& others) { selection.add(*others.getItems().begin()); }},
    {"remove one", [](SnSelection& selection, SnSelection const&) { selection.remove(*selection.getItems().begin()); }},
    {"toggle one",
        [](SnSelection& selection, SnSelection const& others) { selection.toggle(*others.getItems().begin()); }},
    {"add", [](SnSelection& selection, SnSelection const& others) { selection.add(others); }},
    {"remove", [](SnSelection& selection, SnSelection const& others) { selection.remove(others); }},
    {"toggle", [](SnSelection& selection, SnSelection const& others) { selection.toggle(others); }},
    {"replace", [](SnSelection& selection, SnSelection const& others) { selection.replace(others); }},
    {"clear", [](SnSelection& selection, SnSelection const&) { selection.clear(); }},
};

// Alone and shared with a copy, of sizes around those at which tables and rows grow.
TEST_F(SelectionFaults, ASelectionChangesAsAWholeOrNotAtAll) {
    for (Change const& change : changes)
        for (int const size : {1, 3, 4, 8, 15, 16, 17})
            for (bool const isShared : {false, true})
                tryAllFaults(change.name, [&](FaultyAttempt& attempt) {
                    auto const others = numbers(6, 50);
                    auto const selection = numbers(1, 2 * size);
                    selection->add(*numbers(30, 34));
                    auto const expected = selection->copy();
                    change.apply(*expected, *others);
                    std::string const before = content(*selection), after = content(*expected);
                    auto const copy = isShared ? selection->copy() : nullptr;
                    expected->clear();
                    bool const isDone = attempt([&] { change.apply(*selection, *others); }) == Outcome::Done;
                    EXPECT_EQ(isDone ? after : before, content(*selection));
                    if (copy) {
                        EXPECT_EQ(before, content(*copy));
                    }
                    expectUsable(*selection);
                });
}

using Create = std::function<RCShdPtr<CmCommand>(RCShdPtr<SnSelection> const&, RCShdPtr<SnSelection> const&)>;

Create withItems(CmSelectionChangeWithItemsCmd::Type type) {
    return [type](auto const& selection, auto const& items) {
        return CmSelectionChangeWithItemsCmd::create(selection, items, type);
    };
}

Create withOne(CmSelectionChangeCmd::Type type) {
    return [type](auto const& selection, auto const& items) {
        auto const& from = type == CmSelectionChangeCmd::Add ? items : selection;
        return CmSelectionChangeCmd::create(selection, *from->getItems().begin(), type);
    };
}

struct Row {
    char const* name;
    Create create;
};

Row const commands[] = {{"add command", withItems(CmSelectionChangeWithItemsCmd::Add)},
    {"remove command", withItems(CmSelectionChangeWithItemsCmd::Remove)},
    {"toggle command", withItems(CmSelectionChangeWithItemsCmd::Toggle)},
    {"replace command", [](auto const& selection,
                            auto const& items) { return CmSelectionReplaceAllItemsCmd::create(selection, items); }},
    {"clear command", [](auto const& selection, auto const&) { return CmSelectionClearCmd::create(selection); }},
    {"add one command", withOne(CmSelectionChangeCmd::Add)},
    {"remove one command", withOne(CmSelectionChangeCmd::Remove)}};

TEST_F(SelectionFaults, ACommandChangesTheSelectionAndIsInTheHistoryOrNeither) {
    for (Row const& row : commands)
        tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
            auto const items = numbers(6, 40);
            items->add(text("3"));
            auto const selection = numbers(1, 15);
            std::string const before = content(*selection);
            auto const stack = RCShdPtr<CmCommandStack>::create();
            bool const isDone = attempt([&] { stack->executeAndLog(row.create(selection, items)); }) == Outcome::Done;
            EXPECT_EQ(isDone, stack->canUndo());
            EXPECT_EQ(isDone, content(*selection) != before);
            if (isDone) stack->undo();
            EXPECT_EQ(row.name == std::string("remove one command") && isDone, content(*selection) != before)
                << "which adds at the end what it removed";
            expectUsable(*selection);
        });
}

// An undo or redo that cannot get its memory leaves the selection as it was, and drops what it could not do.
TEST_F(SelectionFaults, AnUndoOrRedoThatFailsLeavesTheSelectionAsItWas) {
    for (bool const isRedo : {false, true})
        for (Row const& row : commands)
            tryAllFaults(std::string(isRedo ? "redo " : "undo ") + row.name, [&](FaultyAttempt& attempt) {
                auto const items = numbers(6, 40);
                items->add(text("3"));
                auto const selection = numbers(1, 15);
                auto const stack = RCShdPtr<CmCommandStack>::create();
                stack->executeAndLog(row.create(selection, items));
                if (isRedo) stack->undo();
                std::string const before = content(*selection);
                auto const shared = selection->copy();
                bool const isDone = attempt([&] { isRedo ? stack->redo() : stack->undo(); }) == Outcome::Done;
                EXPECT_EQ(isDone, content(*selection) != before);
                EXPECT_EQ(before, content(*shared));
                EXPECT_EQ(isDone ? 2 : 1, stack->getStackHeight());
                expectUsable(*selection);
            });
}

} // namespace
