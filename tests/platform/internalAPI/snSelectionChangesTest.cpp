#include "base/exBase.h"
#include "internalAPI/snSelection.h"
#include "resmgt/lgGroups.h"
#include "tests/support/items.h"
#include "tests/support/randomSteps.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Ko;
using namespace KoTest;

using Items = Vector<RCShdPtr<SnItem const>>;

std::string textOf(Items const& items) {
    std::string text;
    for (auto const& item : items)
        text += valueOf(item);
    return text;
}

/// The change as a text: "-removed+added", and "?" where it is not known.
std::string textOf(SnSelectionChange const& change) {
    return (change.removed.empty() ? "" : "-" + textOf(change.removed)) +
           (change.added.empty() ? "" : "+" + textOf(change.added)) + (change.isUnknown ? "?" : "") + " ";
}

TEST(SnSelectionChange, TellsWhatWasRemovedAndAdded) {
    auto const selection = selectionOf({"a", "b"}), others = selectionOf({"b", "c", "d"});
    std::string heard;
    CbSubscription subscription = selection->onChange([&](auto const& change) { heard += textOf(change); });
    auto const expect = [&](char const* expected, auto operation) {
        operation();
        EXPECT_EQ(expected, std::exchange(heard, {})) << content(*selection);
    };
    expect("", [&] { EXPECT_FALSE(selection->add(text("a"))); });
    expect("+c ", [&] { EXPECT_TRUE(selection->add(text("c"))); });
    expect("-a ", [&] { EXPECT_TRUE(selection->remove(text("a"))); });
    expect("", [&] { EXPECT_FALSE(selection->remove(text("a"))); });
    expect("+a ", [&] { selection->toggle(text("a")); });
    expect("-b ", [&] { selection->toggle(text("b")); });
    expect("+bd ", [&] { selection->add(*others); }); // c a b d
    expect("-cbd+e ", [&] { selection->replace(*selectionOf({"a", "e"})); });
    expect("-a+a ", [&] { selection->replace(*selectionOf({"e", "a"})); });
    expect("", [&] { selection->replace(*selection->copy()); });
    expect("", [&] { selection->replace(*selectionOf({"e", "a"})); });
    expect("-ea+fea ", [&] { selection->replace(*selectionOf({"f", "e", "a"})); });
    expect("-e+bcd ", [&] { selection->toggle(*selectionOf({"e", "b", "c", "d"})); });
    expect("-bcd ", [&] { selection->remove(*others); });
    expect("-fa ", [&] { selection->remove(*selection); });
    expect("", [&] { selection->clear(); });
    expect("+bcd ", [&] { selection->add(*others); });
    expect("", [&] { EXPECT_THROW(selection->add(nullptr), ExNullPtr); });
    expect("-bcd ", [&] { selection->clear(); });
    subscription.end();
    expect("", [&] { selection->add(*others); });
}

TEST(SnSelectionChange, IsDeliveredThoughAListenerThrowsOrReleasesTheSelection) {
    auto const sinks = LgSinks::replace({});
    auto selection = selectionOf({"a", "b"});
    std::string heard;
    CbSubscription const throwing = selection->onChange([](auto const&) { throw std::runtime_error("listener"); });
    CbSubscription const releasing = selection->onChange([&](auto const&) { selection.reset(); });
    CbSubscription const last = selection->onChange([&](auto const& change) { heard += textOf(change); });
    selection->replace(*selectionOf({"c"}));
    EXPECT_EQ("-ab+c ", heard);
    EXPECT_TRUE(selection.isNull());
    LgSinks::replace(sinks);
}

// The destructor of a removed item changes the selection again.
TEST(SnSelectionChange, IsDeliveredBeforeItemsAreReleased) {
    using Operation = std::function<void(SnSelection&)>;
    for (Operation const& operation : {Operation([](SnSelection& selection) { selection.clear(); }),
             Operation([](SnSelection& selection) { selection.replace(*selectionOf({"a"})); }),
             Operation([](SnSelection& selection) { selection.remove(*selection.copy()); })}) {
        auto const selection = SnSelection::create();
        std::string heard;
        CbSubscription const subscription =
            selection->onChange([&](SnSelectionChange const& change) { heard += change.added.empty() ? "-" : "+"; });
        selection->add(RCShdPtr<Fuse>::create([&] { heard += "(", selection->add(text("b")), heard += ")"; }));
        heard.clear();
        operation(*selection);
        EXPECT_EQ('(', heard[1]) << heard;
    }
}

/// A selection, and listeners that keep lists of it by its changes. Some change it themselves when they hear of a change.
class WatchedSelection {
public:
    static constexpr std::array operations{
        "Add", "Remove", "Toggle", "AddAll", "RemoveAll", "ToggleAll", "Replace", "Clear", "Copy", "Listen", "Respond"};

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        change(operation, choices);
        return compare();
    }
    std::string finish() const { return {}; }

private:
    /// What a listener knows.
    struct List {
        Items items;
        CbSubscription subscription;
        bool isListening = false;
    };

    void change(std::size_t operation, Choices& choices) {
        auto const one = text(std::string(1, static_cast<char>('a' + choices.take(6))).c_str());
        auto const many = SnSelection::create();
        for (unsigned count = choices.take(5); count > 0; --count)
            many->add(text(std::string(1, static_cast<char>('a' + choices.take(6))).c_str()));
        switch (operation) {
        case 0:
            _selection->add(one);
            break;
        case 1:
            _selection->remove(one);
            break;
        case 2:
            _selection->toggle(one);
            break;
        case 3:
            _selection->add(*many);
            break;
        case 4:
            _selection->remove(*many);
            break;
        case 5:
            _selection->toggle(*many);
            break;
        case 6:
            _selection->replace(choices.take(3) == 0 ? *_copy : *many);
            break;
        case 7:
            _selection->clear();
            break;
        case 8:
            _copy = _selection->copy();
            break;
        case 9:
            listen(choices.take(4));
            break;
        default:
            _responses.push_back({choices.take(10), choices.take(100000)});
        }
    }
    void listen(unsigned index) {
        List& list = _lists[index];
        list = List();
        for (auto const& item : _selection->getItems())
            list.items.push_back(item);
        list.subscription =
            _selection->onChange([this, &list](SnSelectionChange const& change) { hear(list, change); });
    }
    void hear(List& list, SnSelectionChange const& change) {
        for (auto const& item : change.removed)
            if (std::erase_if(list.items, [&](auto const& other) { return other->isEqual(*item); }) != 1)
                _difference = "removed what was not there: " + textOf(change);
        for (auto const& item : change.added)
            list.items.push_back(item);
        if (_responses.empty()) return;
        RandomStep const response = _responses.back();
        _responses.pop_back();
        Choices choices(response.number);
        this->change(response.operation, choices);
    }
    std::string compare() {
        if (!_difference.empty()) return _difference;
        std::string expected = content(*_selection);
        std::erase(expected, ' ');
        for (List const& list : _lists)
            if (list.isListening && textOf(list.items) != expected)
                return "a list has " + textOf(list.items) + " instead of " + expected;
        return {};
    }

    RCShdPtr<SnSelection> _selection = SnSelection::create(), _copy = SnSelection::create();
    std::array<List, 4> _lists;
    std::vector<RandomStep> _responses;
    std::string _difference;
};

TEST(SnSelectionChange, KeepsListsUpToDateWhateverListenersDo) {
    tryRandomSteps<WatchedSelection>(300, 60);
}

} // namespace
