#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actLambda.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/recordingAction.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

using Item = RCShdPtr<SnItem const>;
using Text = ActLambda<LiString>;
using Switch = ActLambda<LiString, bool>;

/// Three layers, "a" to "c". Actions that are registered here are unregistered at the end.
class ActGroupedEntryTest : public testing::Test {
protected:
    ~ActGroupedEntryTest() override { registry.unregisterActionsInGroup(group); }

    Vector<ActGroupedEntry> menu(std::string const& compositeName = "") const {
        return registry.getGroupedActions(layers, none, compositeName, ActRegistry::AllSorted);
    }
    /// Executes a command that the journal records.
    void execute(LiString const& layer, std::string const& what = "") {
        CmUndoGuard(history, "an action").execAndAddUndoCommand(RecordingCommand::create(layer + what, journal));
    }
    std::string takeJournal() {
        std::string text;
        for (std::string const& entry : std::exchange(journal, {}))
            text += entry + " ";
        return text;
    }
    std::string undo() {
        history->undo();
        return takeJournal();
    }
    static std::string targetsOf(ActGroupedEntry const& entry) {
        std::string text;
        for (Item const& target : entry.getTargets())
            text += valueOf(target);
        return text;
    }

    std::string const group = "grouped";
    ActRegistry& registry = ActRegistry::getInstance();
    RCShdPtr<CmCommandStack> const history = RCShdPtr<CmCommandStack>::create();
    RCShdPtr<SnSelection const> const layers = selectionOf({"a", "b", "c"});
    Item const none = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    RCShdPtr<SnSelection> const made = SnSelection::create();
    Journal journal;
};

TEST_F(ActGroupedEntryTest, PerformsOnAllTargetsAsOneStep) {
    Text::add({.description = "Move", .group = group, .perform = [&](LiString const& layer) { execute(layer); }});
    registry.getAction("Move", "")->setDisplayString("Verschieben");
    EXPECT_EQ("abc", targetsOf(menu().front()));
    EXPECT_EQ(3u, menu().front().performAction(history, made));
    EXPECT_EQ("+a +b +c ", takeJournal());
    EXPECT_EQ(2, history->getStackHeight());
    EXPECT_EQ("Verschieben", (*history->getCurrent())->getDescription());
    EXPECT_EQ("-c -b -a ", undo());
}

TEST_F(ActGroupedEntryTest, TakesTheStepBackWhenAnActionThrows) {
    Text::add({.description = "Move", .group = group, .perform = [&](LiString const& layer) {
                   execute(layer);
                   if (layer == "b") throw std::runtime_error("b is locked");
               }});
    EXPECT_EQ("b is locked", messageOf([&] { return menu().front().performAction(history, made); }));
    EXPECT_EQ("+a +b -b -a ", takeJournal());
    EXPECT_EQ(1, history->getStackHeight());
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

TEST_F(ActGroupedEntryTest, LeavesTargetsOutThatBecomeInvalid) {
    std::string removed;
    Text::add({.description = "Remove",
        .group = group,
        .isValid = [&](LiString const& layer) { return removed.find(layer) == std::string::npos; },
        .perform = [&](LiString const& layer) { removed += layer == "a" ? "ab" : layer; }});
    EXPECT_EQ(2u, menu().front().performAction(history, made));
    EXPECT_EQ("abc", removed);
}

TEST_F(ActGroupedEntryTest, MayLoseItsOwnerAndItsActionWhileItPerforms) {
    std::string performed;
    auto entries = std::make_unique<Vector<ActGroupedEntry>>();
    ActAction const* action = nullptr;
    action = Text::add({.description = "Once", .group = group, .perform = [&](LiString const& layer) {
                            entries.reset();
                            registry.unregisterAction(action).reset();
                            performed += layer;
                        }});
    *entries = menu();
    EXPECT_EQ(3u, entries->front().performAction(history, made));
    EXPECT_EQ("abc", performed);
    EXPECT_TRUE(menu().empty());
}

TEST_F(ActGroupedEntryTest, SwitchesOnWhatIsOffAndOffOnlyWhatIsOnForAll) {
    std::map<std::string, bool> visible{{"a", true}};
    std::string switched;
    Switch::add({.description = "Visible",
        .group = group,
        .isChecked = [&](LiString const& layer) { return visible[layer]; },
        .perform = [&](LiString const& layer, bool isOn) { visible[layer] = isOn, switched += layer; }});
    auto const check = [&] {
        ActPresentation const shown = menu().front().getPresentation();
        return std::string(shown.isChecked ? "on" : "off") + (shown.isMixed ? " mixed" : "");
    };
    EXPECT_EQ("off mixed", check());
    EXPECT_EQ(2u, menu().front().performAction(history, made));
    EXPECT_EQ("bc on", switched + " " + check());
    EXPECT_EQ(3u, menu().front().performAction(history, made));
    EXPECT_EQ("bcabc off", switched + " " + check());
    EXPECT_EQ(3u, menu().front().performAction(history, SnItemBasic<bool>::create(true), made));
    EXPECT_EQ("on", check());
}

TEST_F(ActGroupedEntryTest, OffersTheOptionsOfAllTargetsAsInputs) {
    std::map<LiString, double> opacities{{"a", 0.5}, {"b", 0.5}, {"c", 0.5}};
    ActLambda<LiString, double>::add({.description = "Opacity",
        .group = group,
        .isValid = [](LiString const& layer, double opacity) { return layer != "b" || opacity < 1; },
        .defaultInput = [&](LiString const& layer) { return opacities[layer]; },
        .options =
            [&](LiString const& layer) {
                Vector<ActLambda<LiString, double>::Option> options;
                for (double const opacity : {0.0, 0.5, 1.0})
                    if (layer != "c" || opacity > 0)
                        options.push_back({std::to_string(int(opacity * 100)), opacity, opacity == opacities[layer]});
                return options;
            },
        .perform = [&](LiString const& layer, double opacity) { opacities[layer] = opacity; }});
    auto const options = [&] {
        std::string text;
        for (ActOption const& option : menu().front().getOptions())
            text += option.text + (option.isCurrent ? "* " : " ");
        return text;
    };
    EXPECT_EQ("50* 100 ", options());
    EXPECT_EQ(2u, menu().front().performAction(history, menu().front().getOptions()[1].input, made)) << "not for b";
    EXPECT_EQ(0.5, opacities["b"]);
    EXPECT_EQ(1.0, opacities["c"]);
    EXPECT_EQ("50 100 ", options());
}

/// Lists texts, as actions did before options were inputs.
class Listing : public NamedAction<ActAction> {
public:
    Listing(std::string group, bool takesParams)
        : NamedAction("List", "", std::move(group)), _takesParams(takesParams) {}
    bool inputValid(Item const&, Item const& input) const override {
        return ActBasicParam::isNone(input) || SnItemConvert<ActBasicParam>::test(input) == _takesParams;
    }
    void performAction(Item const&, Item const&, RCShdPtr<SnSelection> const&) const override {}
    int enumOptions(Item const&, Item const&, Vector<LiString>& options) const override {
        options.insert(options.end(), {"x", "y"});
        return 2;
    }

private:
    bool const _takesParams;
};

TEST_F(ActGroupedEntryTest, TurnsListedTextsIntoInputs) {
    for (bool const takesParams : {false, true}) {
        registry.registerAction(std::make_unique<Listing>(group, takesParams), ActRegistry::Static);
        Vector<ActOption> const options = menu().front().getOptions();
        ASSERT_EQ(2u, options.size());
        EXPECT_EQ("x", options[0].text);
        EXPECT_TRUE(options[1].input->isEqual(
            takesParams ? static_cast<SnItem const&>(*SnItemBasic<ActBasicParam>::create(ActBasicParam("y")))
                        : *text("y")));
        registry.unregisterActionsInGroup(group);
    }
}

TEST_F(ActGroupedEntryTest, HasTheMembersOfACompositeForItsTargets) {
    auto const validFor = [](std::string const& wanted) {
        return [wanted](LiString const& layer) { return wanted.find(layer) != std::string::npos; };
    };
    auto const perform = [] {};
    registry.registerAction(std::make_unique<NamedAction<ActCompositeAction>>("Blend", "", group), ActRegistry::Static);
    Text::add({.description = "over",
        .group = group,
        .compositeName = "Blend",
        .isValid = validFor("bc"),
        .perform = perform});
    Text::add(
        {.description = "add", .group = group, .compositeName = "Blend", .isValid = validFor("b"), .perform = perform});
    Text::add({.description = "Zoom", .group = group, .isValid = validFor("a"), .perform = perform});
    auto const listing = [](Vector<ActGroupedEntry> const& entries) {
        std::string text;
        for (ActGroupedEntry const& entry : entries)
            text += entry.getDescription() + ":" + targetsOf(entry) + " ";
        return text;
    };
    EXPECT_EQ("Blend:bc Zoom:a ", listing(menu()));
    EXPECT_EQ("add:b over:bc ", listing(menu().front().getMembers(ActRegistry::AllSorted)));
    EXPECT_EQ("over:bc add:b ", listing(menu().front().getMembers(ActRegistry::FirstOnly)));
    EXPECT_EQ("", listing(menu().back().getMembers(ActRegistry::AllSorted)));
}

} // namespace
