#include "framework/actions/actCompositeAction.h"
#include "tests/support/recordingAction.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

class Composite : public ActCompositeAction {
public:
    Composite(char const* description, char const* compositeName)
        : _description(description), _compositeName(compositeName) {}
    LiString getDescription() const override { return _description; }
    std::string getCompositeName() const override { return _compositeName; }

private:
    char const* _description;
    char const* _compositeName;
};

class ActCompositeActionTest : public testing::Test, public WithActions {
protected:
    ~ActCompositeActionTest() override {
        for (ActAction const* const composite : _composites)
            registry.unregisterAction(composite);
    }
    void addComposite(char const* description, char const* compositeName) {
        auto composite = std::make_unique<Composite>(description, compositeName);
        _composites.push_back(composite.get());
        registry.registerAction(std::move(composite), ActRegistry::Static);
    }
    std::string topLevel() const { return listed(registry.getActions(text("1"), text("i"), "", first)); }

private:
    std::vector<ActAction const*> _composites;
};

TEST_F(ActCompositeActionTest, IsValidWhileOneOfItsMembersIs) {
    addComposite("Tools", "");
    EXPECT_EQ("", topLevel());
    add({"never", "Tools", "", [](auto const&, auto const&) { return false; }});
    add({"plain", "", "", {}});
    EXPECT_EQ("plain:1", topLevel());
    auto* const member =
        add({"for 1", "Tools", "group", [](auto const& target, auto const&) { return target == "1"; }});
    EXPECT_EQ("Tools:1 plain:1", topLevel());
    EXPECT_EQ("plain:2", listed(registry.getActions(text("2"), text("i"), "", first)));
    registry.unregisterAction(member);
    EXPECT_EQ("plain:1", topLevel());
}

TEST_F(ActCompositeActionTest, NestsAndStandsOnlyForWhatIsInIt) {
    addComposite("Inner", "Outer");
    addComposite("Outer", "");
    EXPECT_EQ("", topLevel());
    add({"deep", "Inner", "", {}});
    EXPECT_EQ("Outer:1", topLevel());
    EXPECT_EQ("Inner:1", listed(registry.getActions(text("1"), text("i"), "Outer", first)));
}

TEST_F(ActCompositeActionTest, IsNoMemberOfItself) {
    addComposite("Itself", "Itself");
    addComposite("There", "Back");
    addComposite("Back", "There");
    for (char const* const name : {"Itself", "There", "Back"})
        EXPECT_EQ("", listed(registry.getActions(text("1"), text("i"), name, first))) << name;
    add({"member", "There", "", {}});
    EXPECT_EQ("There:1", listed(registry.getActions(text("1"), text("i"), "Back", first)));
}

TEST_F(ActCompositeActionTest, DoesNothingItself) {
    addComposite("Tools", "");
    add({"member", "Tools", "", {}});
    auto const selection = selectionOf({"a"});
    registry.getActions(text("1"), text("i"), "", first)->performAction(selection);
    EXPECT_EQ("a", content(*selection));
    EXPECT_TRUE(journal.empty());
}

} // namespace
