#include "framework/actions/actRegistry.h"
#include "base/inInitMgr.h"
#include "framework/actions/actBasicParam.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingAction.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;
using Journal = std::vector<std::string>;
using Items = List<RCShdPtr<SnItem const>>;

// The content and the order of query results are tested in actRegistryModelTest.cpp.
class ActRegistryTest : public testing::Test, public WithActions {
protected:
    RCShdPtr<SnItem const> const none;
    RCShdPtr<SnItem const> const t1 = text("1"), t2 = text("2"), input = text("i");
};

TEST_F(ActRegistryTest, PassesTheCarrierAsTheInput) {
    add({"a", "", "", [](auto const& target, auto const&) { return target == "2"; }});
    auto const carrier = DrCarrier::create(selectionOf({"x"}));
    auto const drops = registry.getActions(Items{t1, t2}, carrier, "", first);
    EXPECT_EQ("a:2", listed(drops));
    EXPECT_EQ(carrier, SnItemConvert<RCShdPtr<DrCarrier>>::get(drops->getInput()));
}

TEST_F(ActRegistryTest, QueriesWithoutItemsByNewEmptyOnes) {
    add({"a", "", "", {}});
    auto const entries = registry.getNoTargetNoInputActions("", "", first);
    EXPECT_TRUE(entries->getTarget()->isEqual(*SnItemBasic<ActBasicParam>::create(ActBasicParam())));
    EXPECT_TRUE(entries->getInput()->isEqual(*entries->getTarget()));
    EXPECT_FALSE(entries->getTarget() == entries->getInput());
    EXPECT_FALSE(entries->getTarget() == registry.getNoTargetNoInputActions("", "", first)->getTarget());
}

TEST_F(ActRegistryTest, ReadsEachDescriptionOnceToSort) {
    auto const* const invalid = add({"", "", "", [](auto const&, auto const&) { return false; }});
    std::vector<RecordingAction*> actions;
    for (int number = 0; number < 100; ++number)
        actions.push_back(add({std::to_string(number * 37 % 100), "", "", {}}));
    static_cast<void>(registry.getActions(Items{t1, t2}, input, "", sorted));
    static_cast<void>(registry.getActions(Items{t1, t2}, input, "", first));
    for (auto const* const action : actions)
        EXPECT_EQ(1, action->descriptionsRead);
    EXPECT_EQ(0, invalid->descriptionsRead);
}

TEST_F(ActRegistryTest, ReturnsSnapshotsThatPerformOnTheirItemsOrOnAnotherInput) {
    auto* const action = add({"a", "", "group", {}});
    action->setDisplayString("A");
    auto const entry = registry.getActions(text("mine"), text("i"), "", first);
    add({"b", "", "", {}});
    OPtr<ActAction> const kept = registry.unregisterAction(action);
    EXPECT_EQ("a:mine", listed(entry));
    auto const selection = SnSelection::create();
    entry->performAction(selection);
    entry->performAction(text("other"), selection);
    EXPECT_EQ((Journal{"a(mine,i)", "a(mine,other)"}), journal);
    EXPECT_EQ("mine", content(*selection));
    EXPECT_EQ(action, entry->getAction());
    EXPECT_EQ("A", entry->getDisplayString());
    EXPECT_EQ("group", entry->getGroup());
}

TEST_F(ActRegistryTest, LetsActionsRegisterAndUnregisterWhileTheyArePerformed) {
    auto* const victim = add({"victim", "", "", {}});
    auto* const action = add({"a", "", "x", {}});
    action->onPerform = [&] {
        registry.unregisterAction(victim);
        registry.unregisterActionsInGroup("x");
        for (int number = 0; number < 100; ++number)
            add({"new", "", "new", {}});
        EXPECT_TRUE(registry.getActions(none, none, Set<std::string>{"x"}, "", first).atEnd());
    };
    auto entries = registry.getActions(t1, input, "", first);
    entries.last();
    entries->performAction(SnSelection::create());
    EXPECT_EQ((Journal{"~victim", "a(1,i)", "~a"}), takeJournal()) << "destroyed when it has returned";
    EXPECT_EQ(100u, registry.getActionsInGroup("new", first).getCardinality());
}

TEST_F(ActRegistryTest, KeepsAnActionThatUnregistersItselfUntilTheOutermostCallReturns) {
    auto* const action = add({"a", "", "", {}});
    auto entries = registry.getActions(t1, input, "", first);
    int depth = 0;
    action->onPerform = [&] {
        if (++depth == 1) {
            action->performAction(t2, input, nullptr);
            static_cast<ActAction const*>(action)->performAction();
            entries = {}; // as a menu that closes
        } else
            registry.unregisterAction(action);
    };
    entries->performAction(nullptr);
    EXPECT_EQ((Journal{"a(2,i)", "a(?,?)", "a(1,i)", "~a"}), takeJournal());

    auto* const direct = add({"b", "", "", {}});
    direct->onPerform = [&] { registry.unregisterAction(direct); };
    static_cast<ActAction const*>(direct)->performAction();
    EXPECT_EQ((Journal{"b(?,?)", "~b"}), journal);
}

std::string names(ConstIterator<ActAction const*> const& found) {
    std::string result;
    for (ActAction const* const action : found.elements())
        result += action->getDescription();
    return result;
}

// During each query, an action unregisters itself and registers others inside the function that the row names.
TEST_F(ActRegistryTest, AsksActionsThatRegisterOthersAndUnregisterThemselves) {
    struct Row {
        char const* name;
        char const* readWhat;
        std::string expected;
        std::function<std::string()> ask;
    };
    for (Row const& row : {Row{"first", "composite name", "b:1",
                               [&] { return listed(registry.getActions(t1, input, {"g"}, "", first)); }},
             Row{"sorted", "group", "b:1", [&] { return listed(registry.getActions(t1, input, {"g"}, "", sorted)); }},
             Row{"sorting", "description", "b:1",
                 [&] { return listed(registry.getActions(t1, input, {"g"}, "", sorted)); }},
             Row{"group", "group", "b", [&] { return names(registry.getActionsInGroup("g", first)); }},
             Row{"sorted group", "description", "b", [&] { return names(registry.getActionsInGroup("g", sorted)); }},
             Row{"getAction", "description", "none", [&] { return registry.getAction("a", "") ? "a" : "none"; }},
             Row{"unregister", "group", "", [&] {
                     return registry.unregisterActionsInGroup("g"),
                            listed(registry.getActions(t1, input, {"g"}, "", first));
                 }}}) {
        SCOPED_TRACE(row.name);
        auto* const action = add({"a", "", "g", {}});
        add({"b", "", "g", {}});
        action->onRead = [&](char const* what) {
            if (std::string(row.readWhat) != what || !registry.unregisterAction(action)) return;
            for (int number = 0; number < 100; ++number)
                add({"new", "", "new", {}});
            journal.push_back("read on");
        };
        EXPECT_EQ(row.expected, row.ask());
        EXPECT_EQ((Journal{"read on", "~a"}), Journal(journal.begin(), journal.begin() + 2))
            << "destroyed when it has returned";
        registry.unregisterActionsInGroup(Set<std::string>{"g", "new"});
        journal.clear();
    }
}

TEST_F(ActRegistryTest, LeavesOutActionsThatAreUnregisteredDuringTheQuery) {
    for (auto const order : {first, sorted}) {
        RecordingAction* itself = nullptr;
        auto* const earlier = add({"b", "", "", {}});
        itself = add({"a", "", "", [&](auto const&, auto const&) {
                          registry.unregisterAction(earlier);
                          registry.unregisterAction(itself);
                          add({"new", "", "new", {}});
                          return true;
                      }});
        add({"c", "", "", {}});
        EXPECT_EQ("c:1", listed(registry.getActions(t1, input, "", order)));
        EXPECT_EQ((Journal{"~b", "~a"}), takeJournal());
        registry.unregisterActionsInGroup(Set<std::string>{"", "new"});
        journal.clear();
    }
}

TEST_F(ActRegistryTest, DestroysAGroupWhoseDestructorsRegisterActions) {
    for (int number = 0; number < 20; ++number)
        add({"old", "", "g", {}})->onDestroy = [&] { add({"new", "", "n", {}}); }; // perhaps at the same address
    registry.unregisterActionsInGroup("g");
    EXPECT_EQ(20u, registry.getActionsInGroup("n", first).getCardinality());
    EXPECT_EQ(20, std::count(journal.begin(), journal.end(), "~old"));
    EXPECT_EQ(20u, journal.size());
}

TEST_F(ActRegistryTest, ListsAllActionsAndGroupsAndReportsChanges) {
    Journal changes;
    auto const record = [&](ActRegistryChange const& change) {
        changes.push_back(std::to_string(static_cast<int>(change.kind)) + ":" + std::to_string(change.actions.size()));
        if (changes.size() == 1) throw std::runtime_error("a listener's error is only logged");
    };
    CbSubscription const subscription = registry.onChange(record);
    auto* const action = add({"b", "composite", "g1", {}});
    add({"a", "", "g2", {}}, ActRegistry::Dynamic);
    add({"c", "", "", {}}, ActRegistry::Dynamic);
    EXPECT_EQ((Set<std::string>{"g1", "g2"}), registry.getGroups());
    Journal listed;
    for (ActAction const* const each : registry.getAllActions(sorted).elements())
        listed.push_back(each->getDescription());
    EXPECT_EQ((Journal{"a", "b", "c"}), listed);
    EXPECT_EQ(3u, registry.getAllActions(first).getCardinality());

    registry.invalidate(action);
    registry.invalidate(nullptr);
    Vector<OPtr<ActAction>> dynamic;
    for (char const* const name : {"a", "c"})
        dynamic.emplace_back(registry.getAction(name, ""));
    registry.deleteAllDynamicActions();
    for (int time = 0; time < 2; ++time)
        static_cast<void>(registry.unregisterAction(action));
    add({"d", "", "g1", {}});
    for (int time = 0; time < 2; ++time)
        registry.unregisterActionsInGroup("g1");
    EXPECT_EQ((Journal{"0:1", "0:1", "0:1", "2:1", "2:0", "1:2", "1:1", "0:1", "1:1"}), changes);
}

TEST_F(ActRegistryTest, GuardsTheInterpreterDuringQueriesForSeveralTargets) {
    Journal held;
    add({"a", "", "", [&](auto const&, auto const&) {
             held.push_back(PiPythonInterpreterTerminationGuard::isHeld() ? "held" : "free");
             return true;
         }});
    static_cast<void>(registry.getActions(t1, input, "", first));
    static_cast<void>(registry.getActions(Items{t1}, input, "", first));
    static_cast<void>(registry.getActions(selectionOf({"1"}), input, "", first));
    static_cast<void>(registry.getActions(Items{t1}, DrCarrier::create(SnSelection::create()), "", first));
    EXPECT_EQ((Journal{"free", "held", "held", "held"}), held);
    EXPECT_FALSE(PiPythonInterpreterTerminationGuard::isHeld());
}

TEST(ActRegistry, DestroysTheRegisteredActionsInOrderAtItsEnd) {
    inChildProcess([] {
        static Journal journal;
        ActRegistry& registry = ActRegistry::getInstance();
        auto second = std::make_unique<RecordingAction>(ActionTraits{"b", "", "", {}}, journal);
        auto first = std::make_unique<RecordingAction>(ActionTraits{"a", "", "", {}}, journal);
        first->onDestroy = [&registry, later = second.get()] {
            EXPECT_FALSE(registry.unregisterAction(later));
            EXPECT_EQ(nullptr, registry.getAction("a", ""));
        };
        ActAction* const twice = second.get();
        registry.registerAction(std::move(first), ActRegistry::Dynamic);
        registry.registerAction(std::move(second), ActRegistry::Static);
        registry.registerAction(OPtr<ActAction>(twice), ActRegistry::Static);
        InInitMgr::finalize();
        EXPECT_EQ((Journal{"~a", "~b"}), journal);
    });
}

} // namespace
