#include "base/inInitMgr.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actMenuBase.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/childProcess.h"
#include "tests/support/items.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

int liveActions = 0;

template <class Base>
class NamedAction : public Base {
public:
    NamedAction(std::string description, std::string group, std::string compositeName)
        : _description(std::move(description)), _group(std::move(group)), _compositeName(std::move(compositeName)) {
        ++liveActions;
    }
    ~NamedAction() override { --liveActions; }

    LiString getDescription() const override { return _description; }
    std::string getGroup() const override { return _group; }
    std::string getCompositeName() const override { return _compositeName; }

private:
    std::string _description, _group, _compositeName;
};

class ValidAction : public NamedAction<ActAction> {
public:
    using NamedAction::NamedAction;
    bool inputValid(RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&) const override { return true; }
    void performAction(
        RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&, RCShdPtr<SnSelection> const&) const override {}
};

/// Actions on two levels, with names that take memory of their own.
class ActionFaults : public FaultsTest {
protected:
    static inline std::string const composite = "a composite action with a rather long description";
    static inline std::string const group = "a group of actions with a rather long name";

    static OPtr<ActAction> make(std::string const& name, std::string const& compositeName = {}) {
        return std::make_unique<ValidAction>(name + " of the actions that these tests register", group, compositeName);
    }
    static void fill() {
        ActRegistry& registry = ActRegistry::getInstance();
        for (char const* const name : {"4", "2", "3", "1"}) {
            registry.registerAction(make(name), ActRegistry::Static);
            registry.registerAction(make(name, composite), ActRegistry::Dynamic);
        }
        registry.registerAction(
            std::make_unique<NamedAction<ActCompositeAction>>(composite, group, ""), ActRegistry::Static);
    }
    static void clear() { ActRegistry::getInstance().unregisterActionsInGroup(group); }
    static std::size_t count() {
        return ActRegistry::getInstance().getActionsInGroup(group, ActRegistry::FirstOnly).getCardinality();
    }
};

TEST_F(ActionFaults, AnActionIsRegisteredOrDestroyed) {
    tryAllFaults("registerAction", [](FaultyAttempt& attempt) {
        fill();
        OPtr<ActAction> action = make("new");
        bool const isDone = attempt([&] {
            ActRegistry::getInstance().registerAction(std::move(action), ActRegistry::Static);
        }) == Outcome::Done;
        EXPECT_EQ(isDone ? 10u : 9u, count());
        EXPECT_EQ(isDone ? 10 : 9, liveActions);
        clear();
        EXPECT_EQ(0, liveActions);
    });
}

TEST_F(ActionFaults, UnregisteringOneCannotFailAndGroupsGoAsAWhole) {
    tryAllFaults("unregisterAction", [](FaultyAttempt& attempt) {
        fill();
        auto const* const action = ActRegistry::getInstance().getAction(composite, "");
        attempt.withoutFail([&] { ActRegistry::getInstance().unregisterAction(action); });
        EXPECT_EQ(8u, count());
        clear();
    });
    tryAllFaults("unregisterActionsInGroup", [](FaultyAttempt& attempt) {
        fill();
        bool const isDone =
            attempt([] { ActRegistry::getInstance().unregisterActionsInGroup(group); }) == Outcome::Done;
        EXPECT_EQ(isDone ? 0u : 9u, count());
        EXPECT_EQ(isDone ? 0 : 9, liveActions);
        clear();
    });
    tryAllFaults("deleteAllDynamicActions", [](FaultyAttempt& attempt) {
        fill();
        Vector<OPtr<ActAction>> made;
        auto found = ActRegistry::getInstance().getActionsInGroup(group, ActRegistry::FirstOnly);
        for (; !found.atEnd(); ++found)
            if ((*found)->getCompositeName() == composite)
                made.emplace_back(const_cast<ActAction*>(*found)); // whoever made them destroys them
        attempt.withoutFail([] { ActRegistry::getInstance().deleteAllDynamicActions(); });
        EXPECT_EQ(5u, count());
        clear();
    });
}

class Menu : public ActMenuBase {
public:
    std::size_t shown = 0;

protected:
    bool showMenu(Entries entries, GePoint2<int> const&, RCShdPtr<SnSelection> const&) override {
        shown = entries.getCardinality();
        for (; !entries.atEnd(); ++entries)
            if (entries->getDescription().starts_with("a composite")) shown += getMembers(*entries).getCardinality();
        return true;
    }
};

TEST_F(ActionFaults, AQueryAnswersInFullOrNotAtAll) {
    ActRegistry& registry = ActRegistry::getInstance();
    auto const target = text("1"), input = text("input");
    auto const selection = selectionOf({"1", "2", "3"});
    ActMenuBase::Items const targets{target, text("2")};
    auto const carrier = DrCarrier::create(selection);
    struct Row {
        char const* name;
        std::size_t expected;
        std::function<std::size_t(ActRegistry::Numerator)> ask;
    };
    for (Row const& row :
        {Row{"getActions", 5,
             [&](auto order) { return registry.getActions(target, input, "", order).getCardinality(); }},
            Row{"getActions in a group", 4,
                [&](auto order) {
                    return registry.getActions(target, input, {group}, composite, order).getCardinality();
                }},
            Row{"getNoTargetNoInputActions", 5,
                [&](auto order) { return registry.getNoTargetNoInputActions(group, "", order).getCardinality(); }},
            Row{"getActionsInGroup", 9,
                [&](auto order) { return registry.getActionsInGroup(group, order).getCardinality(); }},
            Row{"getAction", 1, [&](auto) { return std::size_t{registry.getAction(composite, "") ? 1u : 0u}; }},
            Row{"menu", 14, [&](auto) {
                    Menu* const menu = new Menu;
                    RCShdPtr<Menu> const kept(menu);
                    menu->setActionsForSelection(targets, {}, selection);
                    return menu->shown - 4; // the composite is shown for both
                }}})
        for (auto const order : {ActRegistry::FirstOnly, ActRegistry::AllSorted})
            tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
                fill();
                std::size_t found = 0;
                bool const isDone = attempt([&] { found = row.ask(order); }) == Outcome::Done;
                EXPECT_EQ(isDone ? row.expected : 0, found);
                EXPECT_EQ(row.expected, row.ask(order)) << "asked again";
                clear();
            });
    for (auto const order : {ActRegistry::FirstOnly, ActRegistry::AllSorted})
        tryAllFaults("getActions for several targets", [&](FaultyAttempt& attempt) {
            fill();
            attempt([&] {
                bool const isFirst = order == ActRegistry::FirstOnly;
                EXPECT_EQ(isFirst ? 5u : 10u, registry.getActions(targets, input, "", order).getCardinality());
                EXPECT_EQ(isFirst ? 5u : 15u,
                    registry.getActions(RCShdPtr<SnSelection const>(selection), input, "", order).getCardinality());
                EXPECT_EQ(isFirst ? 5u : 10u, registry.getActions(targets, carrier, "", order).getCardinality());
            });
            clear();
        });
}

TEST_F(ActionFaults, TheEndDestroysAllActionsWithoutMemory) {
    inChildProcess([] {
        fill();
        OPtr<ActAction> twice = make("twice");
        ActAction* const action = twice.get();
        ActRegistry::getInstance().registerAction(std::move(twice), ActRegistry::Static);
        ActRegistry::getInstance().registerAction(OPtr<ActAction>(action), ActRegistry::Static);
        EXPECT_EQ(10, liveActions);
        AllocationFaults::arm(AllocationFaults::Kind::Lasting, 1, false);
        ActRegistry::finalize();
        AllocationFaults::disarm();
        EXPECT_EQ(0, liveActions);
    });
}

} // namespace
