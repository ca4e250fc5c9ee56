#include "base/exBase.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actTypedAction.h"
#include "tests/fixtures/typedAction/typedAction.h"
#include "tests/support/recordingAction.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

using Param = SnItemBasic<ActBasicParam>;

TEST(ActAction, IsValidWithTwoEmptyItems) {
    std::vector<std::string> journal;
    RecordingAction const action(
        {"a", "", "", [](auto const& target, auto const& input) { return target == input; }}, journal);
    EXPECT_TRUE(action.inputValid()) << "with two empty items";
    EXPECT_EQ("ToggleOn ToggleOff ", ActAction::toggleOnString() + ActAction::toggleOffString());
}

TEST(ActBasicParam, IsCarriedByAnItem) {
    auto const item = Param::create(ActBasicParam("a"));
    EXPECT_TRUE(item->isEqual(*Param::create(ActBasicParam("a"))));
    EXPECT_FALSE(item->isEqual(*Param::create(ActBasicParam("A"))));
    EXPECT_EQ(item->getHash(), Param::create(ActBasicParam("a"))->getHash());
    EXPECT_EQ("a", SnItemConvert<ActBasicParam>::get(item).getValue());
    EXPECT_FALSE(SnItemConvert<ActBasicParam>::getPredicate().test(text("a")));
}

/// Joins two texts; valid for different ones.
class Join : public ActTypedAction<LiString, LiString> {
public:
    using ActTypedAction::enumOptions;
    using ActTypedAction::inputValid;
    using ActTypedAction::performAction;

    LiString getDescription() const override { return "Join"; }
    bool inputValid(LiString const& target, LiString const& input) const override { return target != input; }
    void performAction(
        LiString const& target, LiString const& input, RCShdPtr<SnSelection> const& selection) const override {
        selection->add(text((target + input).c_str()));
    }
    int enumOptions(LiString const& target, LiString const& input, Vector<LiString>& options) const override {
        options.insert(options.end(), {target, input});
        return 2;
    }
};

class ActTypedActionTest : public testing::Test {
protected:
    std::string failureOf(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const {
        return thrownBy([&] { join.performAction(target, input, selection); }, true);
    }

    Join const join{};
    RCShdPtr<SnSelection> const selection = SnSelection::create();
    RCShdPtr<SnItem const> const other = Param::create(ActBasicParam("a"));
};

TEST_F(ActTypedActionTest, WorksOnTheValuesOfItems) {
    EXPECT_TRUE(join.inputValid(text("a"), text("b")));
    EXPECT_FALSE(join.inputValid(text("a"), text("a")));
    join.performAction(text("a"), text("b"), selection);
    EXPECT_EQ("ab", content(*selection));
    Vector<LiString> options;
    EXPECT_EQ(2, join.enumOptions(text("a"), text("b"), options));
    EXPECT_EQ((Vector<LiString>{"a", "b"}), options);
}

TEST_F(ActTypedActionTest, IsNotValidForOtherItemsAndRefusesToBePerformedOnThem) {
    Vector<LiString> options;
    std::pair<RCShdPtr<SnItem const>, RCShdPtr<SnItem const>> const unsuitable[] = {
        {other, text("b")}, {text("a"), other}, {nullptr, text("b")}, {text("a"), nullptr}, {other, other}};
    for (auto const& [target, input] : unsuitable) {
        EXPECT_FALSE(join.inputValid(target, input));
        EXPECT_EQ(0, join.enumOptions(target, input, options));
    }
    EXPECT_TRUE(options.empty());
    std::string const targetFails =
        "SnItemConvert< TargetType >::test( target ) [framework/actions/src/actTypedAction.imp:83]";
    EXPECT_EQ(targetFails, failureOf(other, text("b")));
    EXPECT_EQ(targetFails, failureOf(other, other)) << "the target is looked at first";
    EXPECT_EQ("SnItemConvert< InputType >::test( input ) [framework/actions/src/actTypedAction.imp:84]",
        failureOf(text("a"), other));
    EXPECT_TRUE(selection->isEmpty());
}

TEST_F(ActTypedActionTest, IsInstantiatedByOtherLibrariesForTheirTypes) {
    auto const action = makeRenumber();
    auto const frame = SnItemBasic<Frame>::create(Frame{7});
    auto const drop = DrCarrierItem::create(DrCarrier::create(selectionOf({"a", "b"})));
    EXPECT_TRUE(action->inputValid(frame, drop));
    EXPECT_FALSE(action->inputValid(frame, text("a")));
    EXPECT_FALSE(action->inputValid(drop, drop));
    action->performAction(frame, drop, selection);
    EXPECT_EQ("7a 7b", content(*selection));
    EXPECT_THROW(action->performAction(frame, frame, selection), ExAssertionFailed);
}

} // namespace
