#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/actLambda.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingAction.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

int liveActions = 0;
std::string const group = "a group of actions with a rather long name";

template <class Base>
class LiveAction : public Base {
public:
    LiveAction(std::string description, std::string compositeName)
        : Base(std::move(description), std::move(compositeName), group) {
        ++liveActions;
    }
    ~LiveAction() override { --liveActions; }
};

/// Actions on two levels, with names that take memory of their own.
class ActionFaults : public FaultsTest {
protected:
    static inline std::string const composite = "a composite action with a rather long description";

    static OPtr<ActAction> make(std::string const& name, std::string const& compositeName = {}) {
        return std::make_unique<LiveAction<ValidAction>>(
            name + " of the actions that these tests register", compositeName);
    }
    static void fill() {
        ActRegistry& registry = ActRegistry::getInstance();
        for (char const* const name : {"4", "2", "3", "1"}) {
            registry.registerAction(make(name), ActRegistry::Static);
            registry.registerAction(make(name, composite), ActRegistry::Dynamic);
        }
        registry.registerAction(
            std::make_unique<LiveAction<NamedAction<ActCompositeAction>>>(composite, ""), ActRegistry::Static);
    }
    static void clear() { ActRegistry::getInstance().unregisterActionsInGroup(group); }
    static std::size_t count() {
        return ActRegistry::getInstance().getActionsInGroup(group, ActRegistry::FirstOnly).getCardinality();
    }
};

TEST_F(ActionFaults, AnActionIsRegisteredOrDestroyed) {
    constexpr int amount = 16;
    tryAllFaults("registerAction", [&](FaultyAttempt& attempt) {
        Vector<OPtr<ActAction>> actions;
        while (liveActions < amount)
            actions.push_back(make("new"));
        std::size_t registered = 0;
        bool const isDone = attempt([&] {
            for (; registered < actions.size(); ++registered)
                ActRegistry::getInstance().registerAction(std::move(actions[registered]), ActRegistry::Static);
        });
        EXPECT_EQ(registered, count());
        EXPECT_EQ(isDone ? amount : amount - 1, liveActions);
        clear();
        actions.clear();
        EXPECT_EQ(0, liveActions);
    });
}

TEST_F(ActionFaults, AGroupIsUnregisteredAsAWhole) {
    tryAllFaults("unregisterActionsInGroup", [](FaultyAttempt& attempt) {
        fill();
        bool const isDone = attempt([] { ActRegistry::getInstance().unregisterActionsInGroup(group); });
        EXPECT_EQ(isDone ? 0u : 9u, count());
        EXPECT_EQ(isDone ? 0 : 9, liveActions);
        clear();
    });
}

TEST_F(ActionFaults, AQueryReturnsAllOrFails) {
    ActRegistry& registry = ActRegistry::getInstance();
    auto const target = text("1"), input = text("input");
    RCShdPtr<SnSelection const> const selection = selectionOf({"1", "2", "3"});
    List<RCShdPtr<SnItem const>> const targets{target, text("2")};
    auto const carrier = DrCarrier::create(SnSelection::create());
    auto const count = [](auto const& found) { return found.getCardinality(); };
    struct Row {
        char const* name;
        std::size_t ofFirst, ofSorted;
        std::function<std::size_t(ActRegistry::Numerator)> ask;
    };
    for (Row const& row :
        {Row{"target", 5, 5, [&](auto order) { return count(registry.getActions(target, input, "", order)); }},
            Row{"group", 4, 4,
                [&](auto order) { return count(registry.getActions(target, input, {group}, composite, order)); }},
            Row{"no items", 5, 5,
                [&](auto order) { return count(registry.getNoTargetNoInputActions(group, "", order)); }},
            Row{"all of a group", 9, 9, [&](auto order) { return count(registry.getActionsInGroup(group, order)); }},
            Row{"getAction", 1, 1, [&](auto) { return std::size_t{registry.getAction(composite, "") ? 1u : 0u}; }},
            Row{"targets", 5, 10, [&](auto order) { return count(registry.getActions(targets, input, "", order)); }},
            Row{"selection", 5, 15,
                [&](auto order) { return count(registry.getActions(selection, input, "", order)); }},
            Row{"grouped", 5, 5,
                [&](auto order) { return registry.getGroupedActions(targets, input, "", order).size(); }},
            Row{"carrier", 5, 10, [&](auto order) { return count(registry.getActions(targets, carrier, "", order)); }}})
        for (auto const order : {ActRegistry::FirstOnly, ActRegistry::AllSorted})
            tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
                fill();
                std::size_t const expected = order == ActRegistry::FirstOnly ? row.ofFirst : row.ofSorted;
                std::size_t found = 0;
                bool const isDone = attempt([&] { found = row.ask(order); });
                EXPECT_EQ(isDone ? expected : 0, found);
                EXPECT_EQ(expected, row.ask(order)) << "asked again";
                clear();
            });
}

// Each layer that it is performed on is added to a selection.
TEST_F(ActionFaults, AGroupedEntryIsOneStepOrNone) {
    RCShdPtr<SnSelection> selection;
    RCShdPtr<CmCommandStack> history;
    ActLambda<LiString>::add({.description = "Select", .group = group, .perform = [&](LiString const& layer) {
                                  CmUndoGuard step(history, "Select one");
                                  step.execAndAddUndoCommand(CmSelectionChangeCmd::create(
                                      selection, text(layer.c_str()), CmSelectionChangeCmd::Add));
                              }});
    auto const none = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    RCShdPtr<SnSelection const> const layers = selectionOf({"1", "2", "3"});
    tryAllFaults("perform a grouped entry", [&](FaultyAttempt& attempt) {
        history = RCShdPtr<CmCommandStack>::create();
        selection = SnSelection::create();
        auto const entries = ActRegistry::getInstance().getGroupedActions(layers, none, "", ActRegistry::FirstOnly);
        bool const isDone = attempt([&] { entries.front().performAction(history, SnSelection::create()); });
        // A step that cannot be logged clears the history.
        bool const isPerformed = content(*selection) == "1 2 3";
        EXPECT_TRUE(isPerformed || (!isDone && selection->isEmpty())) << content(*selection);
        EXPECT_EQ(isDone ? 2 : 1, history->getStackHeight());
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        if (history->canUndo()) history->undo();
        EXPECT_EQ(isPerformed && !isDone, !selection->isEmpty());
        selection->clear();
        entries.front().performAction(history, SnSelection::create());
        EXPECT_EQ("1 2 3", content(*selection)) << "performed again";
        history.reset();
        selection.reset();
    });
    clear();
}

TEST_F(ActionFaults, TheEndDestroysAllActionsWithoutMemory) {
    inChildProcess([] {
        fill();
        ActAction* const twice = make("twice").release();
        for (int times = 0; times < 2; ++times)
            ActRegistry::getInstance().registerAction(OPtr<ActAction>(twice), ActRegistry::Static);
        EXPECT_EQ(10, liveActions);
        AllocationFaults::arm(AllocationFaults::Kind::Lasting, 1, false);
        ActRegistry::finalize();
        AllocationFaults::disarm();
        EXPECT_EQ(0, liveActions);
    });
}

} // namespace
