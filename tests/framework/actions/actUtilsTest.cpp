#include "framework/actions/actUtils.h"
#include "base/exBase.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actDndUtils.h"
#include "framework/actions/actMenuBase.h"
#include "tests/support/recordingAction.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;
using Journal = std::vector<std::string>;
using Items = List<RCShdPtr<SnItem const>>;

class ActUtilsTest : public testing::Test, public WithActions {
protected:
    RCShdPtr<SnItem const> const target = text("1"), input = text("i");
    Items const targets{text("1"), text("2")};
    RCShdPtr<SnSelection> const selection = SnSelection::create();
    RCShdPtr<DrCarrier> const carrier = DrCarrier::create(selectionOf({"x", "y"}));
};

TEST_F(ActUtilsTest, TellsActionsByTheirDescriptions) {
    std::vector<std::string> unused;
    RecordingAction const copy({"Copy Layer", "", "", {}}, unused), empty({"", "", "", {}}, unused);
    EXPECT_TRUE(ActUtils::descMatches("Copy Layer")(copy));
    for (char const* const other : {"copy layer", "Copy", ""})
        EXPECT_FALSE(ActUtils::descMatches(other)(copy)) << other;
    EXPECT_TRUE(ActUtils::descMatches("")(empty));
    EXPECT_TRUE(ActUtils::descHas("y L")(copy) && ActUtils::descHas("")(empty));
    EXPECT_FALSE(ActUtils::descHas("Y L")(copy) || ActUtils::descHas("y L")(empty));
}

TEST_F(ActUtilsTest, PerformsTheOneActionThatIsMeant) {
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

TEST_F(ActUtilsTest, AssertsAfterTheFirstWhereSeveralAreMeant) {
    auto* const second = add({"Copy b", "", "", {}});
    auto* const firstOne = add({"Copy a", "", "", {}});
    firstOne->onPerform = [&] { registry.unregisterAction(second); };
    auto const copies = ActUtils::descHas("Copy");
    EXPECT_FALSE(ActUtils::hasSingleAction(target, copies));
    EXPECT_EQ("done == false [framework\\actions\\src\\actUtils:116]",
        thrownBy([&] { ActUtils::executeSingleAction(target, copies, selection); }, true));
    EXPECT_EQ((Journal{"~Copy b", "Copy a(1,?)"}), takeJournal());
    EXPECT_FALSE(ActUtils::hasSingleAction(targets, copies)) << "valid for two targets";
}

TEST_F(ActUtilsTest, AppendsWhatIsCarried) {
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

TEST_F(ActUtilsTest, DropsOnTheFirstTargetOfTheEarliestActionThatTakesIt) {
    add({"z", "", "", [](auto const& t, auto const&) { return t == "2"; }});
    add({"a", "", "", {}});
    RCShdPtr<SnSelection const> const others = selectionOf({"3", "4"});
    EXPECT_TRUE(ActDndUtils::performCarrierActions(targets, carrier, selection, false));
    EXPECT_TRUE(journal.empty());
    EXPECT_TRUE(ActDndUtils::performCarrierActions(targets, carrier, selection, true));
    EXPECT_TRUE(ActDndUtils::performCarrierActions(others, carrier, selection, true));
    EXPECT_EQ((Journal{"z(2,?)", "a(3,?)"}), journal);
    EXPECT_FALSE(ActDndUtils::performCarrierActions(Items(), carrier, selection, true));
}

/// A menu that only remembers; a composite's members in parentheses.
class Menu : public ActMenuBase {
public:
    std::string shown;

protected:
    bool showMenu(Entries entries, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) override {
        shown = std::to_string(position.getX()) + content(*selection) + " " + listed(entries);
        for (; !entries.atEnd(); ++entries)
            shown += " (" + listed(getMembers(*entries)) + ")";
        return entries.getCardinality() > 0;
    }
};

class Composite : public ActCompositeAction {
public:
    Composite(char const* description, char const* compositeName)
        : _description(description), _compositeName(compositeName) {}
    LiString getDescription() const override { return _description; }
    std::string getCompositeName() const override { return _compositeName; }
    std::string getGroup() const override { return "composites"; }

private:
    char const *_description, *_compositeName;
};

TEST_F(ActUtilsTest, AMenuShowsWhatIsValidForTheItemsAndWhatCompositesStandFor) {
    add({"b", "", "", [](auto const&, auto const& none) { return none == "?"; }});
    add({"", "", "", [](auto const& t, auto const&) { return t == "2"; }});
    for (char const* const inner : {"y", "x"}) {
        add({"member", inner, "", {}});
        registry.registerAction(std::make_unique<Composite>(inner, "Tools"), ActRegistry::Static);
    }
    registry.registerAction(std::make_unique<Composite>("Tools", ""), ActRegistry::Static);
    auto const menu = RCShdPtr<Menu>::create();
    ActMenuBase::Entries entries;
    EXPECT_TRUE(menu->setActionsForSelection({text("1"), text("2")}, {3, 4}, selectionOf({"s"}), entries));
    EXPECT_EQ("3s :2 Tools:1 Tools:2 b:1 b:2 () (x:1 y:1) (x:2 y:2) () ()", menu->shown);
    EXPECT_EQ(5u, entries.getCardinality());
    EXPECT_FALSE(menu->setActionsForSelection({}, {0, 0}, selection));
    registry.unregisterActionsInGroup("composites");
}

} // namespace
