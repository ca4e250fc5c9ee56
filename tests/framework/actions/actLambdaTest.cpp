#include "framework/actions/actLambda.h"
#include "internalAPI/snItemType.imp.h"
#include "tests/support/recordingAction.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <map>

namespace {

/// A layer of an application.
struct Layer {
    std::string name;
    friend bool operator==(Layer const&, Layer const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Layer const& layer) { return stream << layer.name; }
};

} // namespace

template <>
struct std::hash<Layer> {
    std::size_t operator()(Layer const& layer) const noexcept { return std::hash<std::string>()(layer.name); }
};

KO_ITEM_TYPE(Layer)

namespace {

using namespace Ko;
using namespace KoTest;

using Item = RCShdPtr<SnItem const>;
using Selection = RCShdPtr<SnSelection>;

// Static objects of the same source can convert already.
bool const convertsEarly = SnItemConvert<Layer>::test(SnItemBasic<Layer>::create({"early"}));

TEST(SnItemType, ConvertsFromTheLoadingOfItsLibraryOn) {
    EXPECT_TRUE(convertsEarly);
    EXPECT_FALSE(SnItemConvert<Layer>::test(text("text")));
    EXPECT_TRUE(isSnItemType<Layer> && isSnItemType<LiString> && isSnItemType<double> && isSnItemType<bool>);
    EXPECT_FALSE(isSnItemType<char>);
    EXPECT_EQ(0.5, SnItemConvert<double>::get(SnItemBasic<double>::create(0.5)));
}

/// Actions that are registered here are unregistered at the end.
class ActLambdaTest : public testing::Test {
protected:
    template <class Lambda>
    ActAction* add(typename Lambda::Traits traits) {
        ActAction* const action = Lambda::add(std::move(traits));
        _added.push_back(action);
        return action;
    }
    ~ActLambdaTest() override {
        for (ActAction const* const action : _added)
            registry.unregisterAction(action);
    }
    std::string menuFor(Item const& target) const {
        return listed(registry.getActions(target, none, "", ActRegistry::AllSorted));
    }

    ActRegistry& registry = ActRegistry::getInstance();
    Item const sky = SnItemBasic<Layer>::create({"sky"}), tree = SnItemBasic<Layer>::create({"tree"});
    Item const none = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    Selection const selection = SnSelection::create();

private:
    Vector<ActAction const*> _added;
};

TEST_F(ActLambdaTest, CallablesTakeAsManyArgumentsAsTheyWant) {
    std::string journal;
    using Take = ActCallable<void, Layer const&, double const&, Selection const&>;
    Item const touched = text("touched");
    for (Take const &take :
        {Take([&] { journal += "none "; }), Take([&](Layer const&layer) { journal += layer.name + " "; }),
            Take([&](Layer const&layer, double value) { journal += layer.name + std::to_string(int(value)) + " "; }),
            Take([&](auto const&layer, auto, auto const&made) { journal += layer.name, made->add(touched); })})
        take({"sky"}, 7.0, selection);
    EXPECT_EQ("none sky sky7 sky", journal);
    EXPECT_TRUE(selection->contains(*touched));
    EXPECT_FALSE(Take());
}

TEST_F(ActLambdaTest, IsAnActionOnValues) {
    std::string journal;
    ActAction* const action = add<ActLambda<Layer, double>>({
        .description = "Opacity",
        .group = "Layers",
        .compositeName = "Look",
        .isValid = [](Layer const& layer, double opacity) { return layer.name == "sky" && opacity <= 1; },
        .perform = [&](Layer const& layer, double opacity) { journal += layer.name + std::to_string(opacity); },
    });
    EXPECT_EQ(
        "Opacity/Layers/Look", action->getDescription() + "/" + action->getGroup() + "/" + action->getCompositeName());
    Item const half = SnItemBasic<double>::create(0.5), two = SnItemBasic<double>::create(2);
    EXPECT_TRUE(action->inputValid(sky, half));
    EXPECT_FALSE(action->inputValid(sky, two));
    EXPECT_FALSE(action->inputValid(tree, half));
    EXPECT_FALSE(action->inputValid(text("sky"), half)) << "another type";
    EXPECT_FALSE(action->inputValid(sky, none)) << "no default input";
    action->performAction(sky, half, selection);
    EXPECT_EQ("sky0.500000", journal);
    EXPECT_NE("", thrownBy([&] { action->performAction(sky, none, selection); }, true));
    EXPECT_NE("", thrownBy<ExNullPtr>([] { ActLambda<Layer>({.description = "nothing to perform"}); }));
}

TEST_F(ActLambdaTest, TakesADefaultInputWhereNoneIsGiven) {
    std::string journal;
    ActAction* const action = add<ActLambda<Layer, LiString>>({
        .description = "Rename",
        .isValid = [](Layer const& layer, LiString const& name) { return layer.name != name; },
        .defaultInput = [](Layer const& layer) { return layer.name == "tree" ? "tree" : layer.name + " 2"; },
        .perform = [&](Layer const&, LiString const& name) { journal += name; },
    });
    EXPECT_EQ("Rename", menuFor(sky));
    EXPECT_EQ("", menuFor(tree)) << "the default is not valid";
    EXPECT_EQ("", menuFor(text("sky")));
    action->performAction(sky, none, selection);
    action->performAction(sky, text("/given"), selection);
    EXPECT_EQ("sky 2/given", journal);
}

TEST_F(ActLambdaTest, SwitchesToTheOtherStateUnlessOneIsGiven) {
    std::map<std::string, bool> visible{{"sky", true}};
    ActAction* const action = add<ActLambda<Layer, bool>>({
        .description = "Visible",
        .isChecked = [&](Layer const& layer) { return visible[layer.name]; },
        .perform = [&](Layer const& layer, bool isOn) { visible[layer.name] = isOn; },
    });
    auto const shown = [&](Item const& target) { return ActPresented::of(*action, target, none); };
    EXPECT_EQ("Visible", menuFor(sky));
    EXPECT_TRUE(shown(sky).isCheckable && shown(sky).isChecked);
    EXPECT_TRUE(shown(text("sky")).isCheckable);
    EXPECT_FALSE(shown(text("sky")).isChecked);
    action->performAction(sky, none, selection);
    action->performAction(tree, SnItemBasic<bool>::create(false), selection);
    EXPECT_FALSE(visible["sky"] || visible["tree"]);
    action->performAction(tree, none, selection);
    EXPECT_TRUE(visible["tree"] && shown(tree).isChecked);
}

TEST_F(ActLambdaTest, IsValidWhereNothingSpeaksAgainstIt) {
    ActAction* const action = add<ActLambda<Layer>>({
        .description = "Cut",
        .presentation = {.toolTip = "Cuts", .whyNot = "never shown"},
        .whyNot = [](Layer const& layer) { return layer.name == "sky" ? "It is locked." : ""; },
        .perform = [] {},
    });
    EXPECT_EQ("", menuFor(sky));
    EXPECT_EQ("Cut", menuFor(tree));
    EXPECT_EQ("It is locked.", ActPresented::of(*action, sky, none).whyNot);
    EXPECT_EQ("", ActPresented::of(*action, tree, none).whyNot);
    EXPECT_EQ("Cuts", ActPresented::of(*action, tree, none).toolTip);
}

} // namespace
