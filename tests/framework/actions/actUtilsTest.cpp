#include "framework/actions/actUtils.h"
#include "base/exBase.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actDndUtils.h"
#include "framework/actions/actMenuBase.h"
#include "tests/support/recordingAction.h"
#include "tests/support/thrown.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;
using Journal = std::vector<std::string>;
using Items = List<RCShdPtr<SnItem const>>;

class ActUtilsTest : public testing::Test, public WithActions {
protected:
    ~ActUtilsTest() override { registry.unregisterActionsInGroup("composites"); }
    void addComposite(char const* description, char const* compositeName) {
        registry.registerAction(
            std::make_unique<NamedAction<ActCompositeAction>>(description, compositeName, "composites"),
            ActRegistry::Static);
    }

    RCShdPtr<SnItem const> const target = text("1"), input = text("i");
    Items const targets{text("1"), text("2")};
    RCShdPtr<SnSelection> const selection = SnSelection::create();
    RCShdPtr<DrCarrier> const carrier = DrCarrier::create(selectionOf({"x", "y"}));
};

/// Holds for all actions while `isDone` is false.
struct Until : PrdPredicateImp<ActAction> {
    explicit Until(bool const& itIsDone) : isDone(itIsDone) {}
    bool test(ActAction const&) const override { return !isDone; }
    bool const& isDone;
};

TEST_F(ActUtilsTest, SelectsActionsByTheirDescriptions) {
    std::vector<std::string> unused;
    RecordingAction const copy({"Copy Layer", "", "", {}}, unused), empty({"", "", "", {}}, unused);
    EXPECT_TRUE(ActUtils::descMatches("Copy Layer")(copy));
    for (char const* const other : {"copy layer", "Copy", ""})
        EXPECT_FALSE(ActUtils::descMatches(other)(copy)) << other;
    EXPECT_TRUE(ActUtils::descMatches("")(empty));
    EXPECT_TRUE(ActUtils::descHas("y L")(copy) && ActUtils::descHas("")(empty));
    EXPECT_FALSE(ActUtils::descHas("Y L")(copy) || ActUtils::descHas("y L")(empty));
}

TEST_F(ActUtilsTest, PerformsTheOneSelectedAction) {
    add({"Copy", "", "", [](auto const& t, auto const&) { return t == "1"; }});
    add({"Copy", "Tools", "", {}});
    add({"Move", "", "", {}});
    auto const copy = ActUtils::descMatches("Copy");
    EXPECT_TRUE(ActUtils::hasSingleAction(target, copy));
    EXPECT_TRUE(ActUtils::hasSingleAction(target, input, copy));
    EXPECT_TRUE(ActUtils::hasSingleAction(targets, copy));
    EXPECT_TRUE(ActUtils::hasSingleAction(targets, input, copy));
    EXPECT_TRUE(ActUtils::executeSingleAction(target, copy, selection));
    EXPECT_TRUE(ActUtils::executeSingleAction(target, input, copy, selection));
    EXPECT_TRUE(ActUtils::executeSingleAction(targets, copy, selection));
    EXPECT_TRUE(ActUtils::executeSingleAction(targets, input, copy, selection));
    EXPECT_EQ((Journal{"Copy(1,?)", "Copy(1,i)", "Copy(1,?)", "Copy(1,i)"}), journal);
    EXPECT_EQ("1", content(*selection));

    EXPECT_FALSE(ActUtils::hasSingleAction(text("2"), copy));
    EXPECT_FALSE(ActUtils::executeSingleAction(text("2"), copy, selection));
    EXPECT_FALSE(ActUtils::executeSingleAction(targets, input, ActUtils::descHas("Paste"), selection));
    EXPECT_THROW(ActUtils::executeSingleAction(targets, input, {}, selection), ExNullPtr);
    EXPECT_EQ(4u, journal.size());
}

TEST_F(ActUtilsTest, AppliesThePredicateInTurnAndAssertsAfterTheFirst) {
    auto* const second = add({"Copy b", "", "", {}});
    auto* const firstOne = add({"Copy a", "", "", {}});
    auto const copies = ActUtils::descHas("Copy");
    EXPECT_FALSE(ActUtils::hasSingleAction(target, copies));
    EXPECT_EQ("done == false [framework\\actions\\src\\actUtils:116]",
        thrownBy([&] { ActUtils::executeSingleAction(target, copies, selection); }, true));
    EXPECT_EQ((Journal{"Copy a(1,?)"}), takeJournal());
    EXPECT_FALSE(ActUtils::hasSingleAction(targets, copies)) << "valid for two targets";

    bool isCopied = false;
    firstOne->onPerform = [&] { isCopied = true; };
    auto const untilCopied = PrdPredicate<ActAction>(RCShdPtr<Until>::create(isCopied));
    EXPECT_TRUE(ActUtils::executeSingleAction(target, untilCopied, selection)) << "the second is asked afterwards";

    firstOne->onPerform = [&] { // another action may take the address of the second one
        registry.unregisterAction(second);
        add({"Copy b", "", "", {}});
    };
    journal.clear();
    EXPECT_TRUE(ActUtils::executeSingleAction(target, copies, selection));
    EXPECT_EQ((Journal{"~Copy b", "Copy a(1,?)"}), takeJournal());
}

TEST_F(ActUtilsTest, AppendsTheCarriedItems) {
    Items items{text("a")};
    EXPECT_EQ(2, ActDndUtils::getSnItems(*carrier, &items));
    EXPECT_EQ(0, ActDndUtils::getSnItems(*DrCarrier::create(SnSelection::create()), &items));
    EXPECT_EQ(0, ActDndUtils::getSnItems(*DrCarrier::create(nullptr), &items));
    std::string appended;
    for (auto const& item : items)
        appended += valueOf(item);
    EXPECT_EQ("axy", appended);
    EXPECT_THROW(ActDndUtils::getSnItems(*carrier, nullptr), ExNullPtr);
}

TEST_F(ActUtilsTest, DropsOnTheFirstTargetOfTheEarliestValidAction) {
    add({"z", "", "", [](auto const& t, auto const&) { return t == "2"; }});
    auto* const last = add({"a", "", "", {}});
    RCShdPtr<SnSelection const> const others = selectionOf({"3", "4"});
    EXPECT_TRUE(ActDndUtils::performCarrierActions(targets, carrier, selection, false));
    EXPECT_TRUE(journal.empty());
    EXPECT_TRUE(ActDndUtils::performCarrierActions(targets, carrier, selection, true));
    EXPECT_TRUE(ActDndUtils::performCarrierActions(others, carrier, selection, true));
    EXPECT_EQ((Journal{"z(2,?)", "a(3,?)"}), journal);
    int const asked = last->asked;
    EXPECT_TRUE(ActDndUtils::performCarrierActions(targets, carrier, selection, false));
    EXPECT_EQ(asked, last->asked) << "another is found before";
    EXPECT_FALSE(ActDndUtils::performCarrierActions(Items(), carrier, selection, true));
}

/// Records the shown entries, with the members of composites in parentheses.
class Menu : public ActMenuBase {
public:
    std::string shown;

protected:
    bool showMenu(Entries entries, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) override {
        shown = std::to_string(position.getX()) + content(*selection) + " " + listed(entries);
        for (ActRegistry::Entry const& entry : entries.elements())
            shown += " (" + listed(getMembers(entry)) + ")";
        return entries.getCardinality() > 0;
    }
};

TEST_F(ActUtilsTest, AMenuShowsTheValidActionsAndTheMembersOfComposites) {
    add({"b", "", "", [](auto const&, auto const& none) { return none == "?"; }});
    add({"", "", "", [](auto const& t, auto const&) { return t == "2"; }});
    for (char const* const inner : {"y", "x"}) {
        add({"member", inner, "", {}});
        addComposite(inner, "Tools");
    }
    addComposite("Tools", "");
    add({"x", "", "", {}}); // a plain action with a composite's name
    auto const menu = RCShdPtr<Menu>::create();
    ActMenuBase::Entries entries;
    EXPECT_TRUE(menu->setActionsForSelection({text("1"), text("2")}, {3, 4}, selectionOf({"s"}), entries));
    EXPECT_EQ("3s :2 Tools:1 Tools:2 b:1 b:2 x:1 x:2 () (x:1 y:1) (x:2 y:2) () () () ()", menu->shown);
    EXPECT_EQ(7u, entries.getCardinality());
    EXPECT_FALSE(menu->setActionsForSelection({}, {0, 0}, selection));
}

TEST_F(ActUtilsTest, ACompositeAsksEachMemberOnceForATargetAndAnInput) {
    // Two composites on each level, which are both members of both on the level above.
    constexpr std::array levels{"", "1", "2", "3", "4", "5", "6"};
    for (std::size_t level = 1; level < levels.size(); ++level)
        for (int times = 0; times < 2; ++times)
            addComposite(levels[level], levels[level - 1]);
    auto* const member = add({"member", levels.back(), "", [](auto const&, auto const&) { return false; }});
    EXPECT_TRUE(registry.getActions(target, input, "", first).atEnd());
    EXPECT_EQ(2, member->asked) << "once for each of the two at the top";

    // A member that calls the composite again, first with another target, then with another input.
    ActAction const* const top = registry.getAction("1", "");
    auto const otherTarget = text("2"), otherInput = text("other");
    add({"asks", levels.back(), "", [&](auto const& t, auto const& i) {
             if (t == "1") return top->inputValid(otherTarget, input);
             return i == "other" || top->inputValid(otherTarget, otherInput);
         }});
    EXPECT_TRUE(top->inputValid(target, input));
}

} // namespace
