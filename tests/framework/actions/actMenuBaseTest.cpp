#include "framework/actions/actMenuBase.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actCompositeAction.h"
#include "tests/support/recordingAction.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

/// A menu that only remembers; a composite's members in parentheses.
class Menu : public ActMenuBase {
public:
    std::string shown;
    GePoint2<int> shownAt;
    RCShdPtr<SnSelection> shownFor;

protected:
    bool showMenu(Entries entries, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) override {
        shownAt = position;
        shownFor = selection;
        shown = listed(entries);
        for (; !entries.atEnd(); ++entries)
            shown += " (" + listed(getMembers(*entries)) + ")";
        return entries.getCardinality() > 0;
    }
};

class Tools : public ActCompositeAction {
public:
    LiString getDescription() const override { return "Tools"; }
};

TEST(ActMenuBase, ShowsWhatIsValidForTheItemsAndWhatCompositesStandFor) {
    WithActions actions;
    actions.add({"b", "", "", [](auto const&, auto const& input) { return input == "?"; }});
    actions.add({"", "", "", [](auto const& target, auto const&) { return target == "2"; }});
    actions.add({"y", "Tools", "", {}});
    actions.add({"x", "Tools", "", {}});
    auto tools = std::make_unique<Tools>();
    ActAction const* const registered = tools.get();
    actions.registry.registerAction(std::move(tools), ActRegistry::Static);

    auto const menu = RCShdPtr<Menu>::create();
    auto const selection = SnSelection::create();
    ActMenuBase::Entries entries;
    EXPECT_TRUE(menu->setActionsForSelection({text("1"), text("2")}, {3, 4}, selection, entries));
    EXPECT_EQ(":2 Tools:1 Tools:2 b:1 b:2 () (x:1 y:1) (x:2 y:2) () ()", menu->shown);
    EXPECT_EQ(5u, entries.getCardinality());
    EXPECT_EQ(GePoint2<int>(3, 4), menu->shownAt);
    EXPECT_EQ(selection, menu->shownFor);
    EXPECT_FALSE(menu->setActionsForSelection({}, {0, 0}, selection));
    EXPECT_EQ("", menu->shown);
    actions.registry.unregisterAction(registered);
}

} // namespace
