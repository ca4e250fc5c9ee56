#include "framework/actions/actRegistry.h"
#include "base/inInitMgr.h"
#include "framework/actions/actBasicParam.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"
#include "tests/support/childProcess.h"
#include "tests/support/recordingAction.h"

#include <gtest/gtest.h>
#include <iostream>

namespace {

using namespace Ko;
using namespace KoTest;
using Journal = std::vector<std::string>;
using Items = List<RCShdPtr<SnItem const>>;

std::function<bool(std::string const&, std::string const&)> validFor(std::string const& targets) {
    return [=](std::string const& target, std::string const&) { return targets.find(target) != std::string::npos; };
}

class ActRegistryTest : public testing::Test, public WithActions {
protected:
    std::string everything(ActRegistry::Numerator order = first) const {
        return listed(registry.getActions(none, none, "", order));
    }

    RCShdPtr<SnItem const> const none;
    RCShdPtr<SnItem const> const t1 = text("1"), t2 = text("2"), t3 = text("3"), input = text("i");
};

TEST_F(ActRegistryTest, ListsValidActionsInOrderOfRegistrationOrOfDescription) {
    add({"c", "", "", validFor("13")});
    add({"a", "", "", validFor("1")});
    add({"b", "", "", validFor("2")});
    add({"abcdefgh2", "", "", validFor("1")});
    add({"abcdefgh", "", "", validFor("1")});
    add({"\xC3\xA4", "", "", validFor("1")});
    EXPECT_EQ("c:1 a:1 abcdefgh2:1 abcdefgh:1 \xC3\xA4:1", listed(registry.getActions(t1, input, "", first)));
    EXPECT_EQ("a:1 abcdefgh:1 abcdefgh2:1 c:1 \xC3\xA4:1", listed(registry.getActions(t1, input, "", sorted)));
    EXPECT_EQ("b:2", listed(registry.getActions(t2, input, "", static_cast<ActRegistry::Numerator>(7))));
    auto const nothing = registry.getActions(text("9"), input, "", sorted);
    EXPECT_FALSE(nothing.isNull());
    EXPECT_TRUE(nothing.atEnd());
    EXPECT_THROW(*nothing, IteratorEx::ExOutOfRange);
}

TEST_F(ActRegistryTest, ListsEachActionForTheFirstOrForEveryTarget) {
    add({"y", "", "", validFor("123")});
    add({"x", "", "", validFor("23")});
    add({"sub", "Tools", "", {}});
    Items const targets{t1, t2, t3};
    auto const selection = selectionOf({"1", "2", "3"});
    RCShdPtr<DrCarrier> const carrier = DrCarrier::create(selection);
    EXPECT_EQ("y:1 x:2", listed(registry.getActions(targets, input, "", first)));
    EXPECT_EQ("x:2 x:3 y:1 y:2 y:3", listed(registry.getActions(targets, input, "", sorted)));
    auto const drops = registry.getActions(targets, carrier, "", first);
    EXPECT_EQ("y:1 x:2", listed(drops));
    EXPECT_EQ(carrier, SnItemConvert<RCShdPtr<DrCarrier>>::get(drops->getInput()));
    EXPECT_EQ("sub:1", listed(registry.getActions(targets, input, "Tools", first)));
    EXPECT_EQ("", listed(registry.getActions(Items(), input, "", sorted)));
}

TEST_F(ActRegistryTest, AsksForActionsWithoutItemsByFreshEmptyOnes) {
    add({"a", "", "", {}});
    auto const entries = registry.getNoTargetNoInputActions("", "", first), others = entries;
    EXPECT_TRUE(entries->getTarget()->isEqual(*SnItemBasic<ActBasicParam>::create(ActBasicParam())));
    EXPECT_TRUE(entries->getInput()->isEqual(*entries->getTarget()));
    EXPECT_FALSE(entries->getTarget() == entries->getInput());
    EXPECT_FALSE(entries->getTarget() == registry.getNoTargetNoInputActions("", "", first)->getTarget());
}

TEST_F(ActRegistryTest, ReadsADescriptionOnceWhenItSorts) {
    std::vector<RecordingAction*> actions;
    for (int number = 0; number < 100; ++number)
        actions.push_back(add({std::to_string(number * 37 % 100), "", "", validFor(number == 50 ? "" : "12")}));
    registry.getActions(Items{t1, t2, t3}, input, "", sorted);
    for (int number = 0; number < 100; ++number)
        EXPECT_EQ(number == 50 ? 0 : 1, actions[static_cast<std::size_t>(number)]->descriptionsRead) << number;
    registry.getActions(Items{t1, t2, t3}, input, "", first);
    EXPECT_EQ(1, actions[0]->descriptionsRead);
}

TEST_F(ActRegistryTest, PerformsAnEntryOnItsItemsOrOnAnotherInput) {
    auto* const action = add({"a", "", "group", {}});
    action->setDisplayString("A");
    auto const entry = registry.getActions(t1, input, "", first);
    registry.registerAction(nullptr, ActRegistry::Static);
    auto const selection = SnSelection::create();
    entry->performAction(selection);
    entry->performAction(text("other"), selection);
    EXPECT_EQ((Journal{"a(1,i)", "a(1,other)"}), journal);
    EXPECT_EQ("1", content(*selection));
    EXPECT_EQ(action, entry->getAction());
    EXPECT_EQ("A", entry->getDisplayString());
    EXPECT_EQ("group", entry->getGroup());
    EXPECT_EQ("", entry->getCompositeName());
    Vector<LiString> options;
    EXPECT_EQ(0, entry->enumOptions(options));
}

TEST_F(ActRegistryTest, AnswersBySnapshotsThatKeepTheirItems) {
    add({"a", "", "", {}});
    auto const removed = add({"b", "", "", {}});
    auto entries = registry.getActions(text("mine"), text("input"), "", first);
    add({"c", "", "", {}});
    OPtr<ActAction> const kept = registry.unregisterAction(removed);
    EXPECT_EQ(removed, kept.get());
    EXPECT_EQ("a:mine b:mine", listed(entries));
    EXPECT_EQ("a c", everything());
    EXPECT_FALSE(registry.unregisterAction(removed));
    entries.last();
    entries->performAction(SnSelection::create());
    EXPECT_EQ(Journal{"b(mine,input)"}, journal);
}

TEST_F(ActRegistryTest, LetsActionsRegisterAndUnregisterWhileTheyArePerformed) {
    auto* const victim = add({"victim", "", "", {}});
    auto* const action = add({"a", "", "x", {}});
    action->onPerform = [&] {
        registry.unregisterAction(victim);
        registry.unregisterActionsInGroup("x");
        for (int number = 0; number < 100; ++number)
            add({"new", "", "new", {}});
        auto const itself = registry.getActions(none, none, Set<std::string>{"x"}, "", first);
        EXPECT_TRUE(itself.atEnd());
    };
    auto entries = registry.getActions(t1, input, "", first);
    entries.last();
    entries->performAction(SnSelection::create());
    EXPECT_EQ((Journal{"~victim", "a(1,i)", "~a"}), takeJournal()) << "destroyed when it has returned";
    EXPECT_EQ(100u, registry.getActionsInGroup("new", first).getCardinality());
}

TEST_F(ActRegistryTest, KeepsAnActionThatDropsItselfUntilTheOutermostCallHasReturned) {
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
    EXPECT_EQ((Journal{"a(2,i)", "a(?,?)", "a(1,i)", "~a"}), journal);
}

TEST_F(ActRegistryTest, GuardsTheInterpreterWhileItAsksForSeveralTargets) {
    Journal held;
    add({"a", "", "", [&](auto const&, auto const&) {
             held.push_back(PiPythonInterpreterTerminationGuard::isHeld() ? "held" : "free");
             return true;
         }});
    registry.getActions(t1, input, "", first);
    registry.getActions(Items{t1}, input, "", first);
    registry.getActions(selectionOf({"1"}), input, "", first);
    registry.getActions(Items{t1}, DrCarrier::create(SnSelection::create()), "", first);
    EXPECT_EQ((Journal{"free", "held", "held", "held"}), held);
    EXPECT_FALSE(PiPythonInterpreterTerminationGuard::isHeld());
}

TEST(ActRegistry, DestroysWhatIsRegisteredInOrderAtItsEnd) {
    inChildProcess([] {
        static Journal journal;
        ActRegistry& registry = ActRegistry::getInstance();
        auto make = [](char const* name) {
            return std::make_unique<RecordingAction>(ActionTraits{name, "", "", {}}, journal);
        };
        auto first = make("b");
        ActAction const* const later = first.get();
        auto second = make("a");
        second->onDestroy = [&registry, later] {
            EXPECT_FALSE(registry.unregisterAction(later));
            EXPECT_EQ(nullptr, registry.getAction("a", ""));
        };
        ActAction* const twice = first.get();
        registry.registerAction(std::move(second), ActRegistry::Dynamic);
        registry.registerAction(std::move(first), ActRegistry::Static);
        registry.registerAction(OPtr<ActAction>(twice), ActRegistry::Static);
        InInitMgr::finalize();
        EXPECT_EQ((Journal{"~a", "~b"}), journal);
    });
}

} // namespace
