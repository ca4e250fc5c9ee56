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

// All operations still work, and all items are found.
void expectUsable(SnSelection& selection) {
    auto const other = text("another one");
    EXPECT_TRUE(selection.add(other));
    for (auto const& item : selection.getItems()) {
        EXPECT_FALSE(selection.add(item));
        EXPECT_TRUE(selection.remove(item));
    }
    EXPECT_TRUE(selection.isEmpty());
}

using Change = std::function<void(SnSelection& selection, SnSelection const& others)>;

std::pair<char const*, Change> const changes[] = {
    {"add one", [](auto& selection, auto& others) { selection.add(*others.getItems().begin()); }},
    {"remove one", [](auto& selection, auto&) { selection.remove(*selection.getItems().begin()); }},
    {"toggle one", [](auto& selection, auto& others) { selection.toggle(*others.getItems().begin()); }},
    {"add", [](auto& selection, auto& others) { selection.add(others); }},
    {"remove", [](auto& selection, auto& others) { selection.remove(others); }},
    {"toggle", [](auto& selection, auto& others) { selection.toggle(others); }},
    {"replace", [](auto& selection, auto& others) { selection.replace(others); }},
    {"clear", [](auto& selection, auto&) { selection.clear(); }}};

// Alone and shared with a copy, of sizes around those at which tables and rows grow.
TEST_F(SelectionFaults, ASelectionChangesAsAWholeOrNotAtAll) {
    for (auto const& [name, change] : changes)
        for (int const size : {1, 3, 4, 8, 15, 16, 17})
            for (bool const isShared : {false, true})
                tryAllFaults(name, [&, &apply = change](FaultyAttempt& attempt) {
                    auto const others = numbers(6, 50);
                    auto const selection = numbers(1, 2 * size);
                    selection->add(*numbers(30, 34));
                    auto const expected = selection->copy();
                    apply(*expected, *others);
                    std::string const before = content(*selection), after = content(*expected);
                    auto const copy = isShared ? selection->copy() : nullptr;
                    expected->clear();
                    bool const isDone = attempt([&] { apply(*selection, *others); });
                    EXPECT_EQ(isDone ? after : before, content(*selection));
                    EXPECT_EQ(before, copy ? content(*copy) : before);
                    expectUsable(*selection);
                });
}

/// Keeps a list of a selection by its changes, without taking memory.
class List {
public:
    explicit List(SnSelection& selection) : _selection(selection) {
        _items.reserve(100);
        read();
        _subscription = selection.onChange([this](SnSelectionChange const& change) { hear(change); });
    }
    std::string content() const {
        std::string result;
        for (auto const& item : _items)
            result += (result.empty() ? "" : " ") + valueOf(item);
        return result;
    }

private:
    void hear(SnSelectionChange const& change) {
        if (change.isUnknown) return read();
        for (auto const& item : change.removed)
            std::erase_if(_items, [&](auto const& other) { return other->isEqual(*item); });
        for (auto const& item : change.added)
            _items.push_back(item);
    }
    void read() {
        _items.clear();
        for (auto const& item : _selection.getItems())
            _items.push_back(item);
    }

    SnSelection& _selection;
    Vector<RCShdPtr<SnItem const>> _items;
    CbSubscription _subscription;
};

TEST_F(SelectionFaults, AListenerHearsOfEachChangeAndOfNoOther) {
    for (auto const& [name, change] : changes)
        tryAllFaults(std::string("watched ") + name, [&, &apply = change](FaultyAttempt& attempt) {
            auto const others = numbers(6, 50), selection = numbers(1, 31);
            selection->add(*numbers(30, 34));
            List const list(*selection);
            std::string const before = list.content();
            bool const isDone = attempt([&] { apply(*selection, *others); });
            EXPECT_EQ(content(*selection), list.content());
            EXPECT_EQ(isDone, before != list.content());
            expectUsable(*selection);
        });
}

using Selection = RCShdPtr<SnSelection>;
using Create = std::function<RCShdPtr<CmCommand>(Selection const&, Selection const&)>;

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

std::pair<char const*, Create> const commands[] = {{"add command", withItems(CmSelectionChangeWithItemsCmd::Add)},
    {"remove command", withItems(CmSelectionChangeWithItemsCmd::Remove)},
    {"toggle command", withItems(CmSelectionChangeWithItemsCmd::Toggle)},
    {"replace command",
        [](auto& selection, auto& items) { return CmSelectionReplaceAllItemsCmd::create(selection, items); }},
    {"clear command", [](auto& selection, auto&) { return CmSelectionClearCmd::create(selection); }},
    {"add one command", withOne(CmSelectionChangeCmd::Add)},
    {"remove one command", withOne(CmSelectionChangeCmd::Remove)}};

// A command that was not executed is not in the history; one that cannot be undone or redone is dropped from it.
TEST_F(SelectionFaults, ACommandChangesTheSelectionAsAWholeOrNotAtAll) {
    for (std::string const step : {"execute ", "undo ", "redo "})
        for (auto const& [name, command] : commands)
            tryAllFaults(step + name, [&, &create = command](FaultyAttempt& attempt) {
                auto const items = numbers(6, 40), selection = numbers(1, 15);
                items->add(text("3"));
                auto const stack = RCShdPtr<CmCommandStack>::create();
                auto const execute = [&] { stack->executeAndLog(create(selection, items)); };
                if (step != "execute ") execute();
                if (step == "redo ") stack->undo();
                std::string const before = content(*selection);
                auto const shared = selection->copy();
                bool const isDone = step == "execute " ? attempt(execute)
                                    : step == "undo "  ? attempt([&] { stack->undo(); })
                                                       : attempt([&] { stack->redo(); });
                EXPECT_EQ(isDone, content(*selection) != before);
                EXPECT_EQ(before, content(*shared));
                EXPECT_EQ(isDone ? 2 : 1, stack->getStackHeight());
                if (stack->canUndo()) stack->undo();
                expectUsable(*selection);
            });
}

TEST(SelectionMemory, AHistoryCostsTheChangesOfItsCommands) {
    for (bool const isEmptied : {false, true}) {
        auto const selection = numbers(1, 20000), one = numbers(0, 0);
        if (isEmptied) selection->remove(*selection->copy());
        auto const stack = RCShdPtr<CmCommandStack>::create();
        long const before = AllocationFaults::liveBytes();
        for (int times = 0; times < 100; ++times)
            stack->executeAndLog(
                CmSelectionChangeWithItemsCmd::create(selection, one, CmSelectionChangeWithItemsCmd::Toggle));
        EXPECT_LT(AllocationFaults::liveBytes() - before, 100 * 1000) << isEmptied;
    }
}

} // namespace
