#include "host/gestures.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "host/actions.h"
#include "script/actionList.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace compositor;
using Names = std::vector<std::string>;

class GesturesTest : public testing::Test {
protected:
    GesturesTest() {
        for (char const* const name : {"a", "b", "c"})
            editor.addLayer(name, Picture(Size{2, 2}));
    }
    ~GesturesTest() override { Ko::DrClipboard::getInstance().clear(); }

    std::string menu() const {
        std::ostringstream output;
        listActions(gestures.targets(), output);
        return output.str();
    }
    std::string why(std::string const& path) const {
        std::ostringstream output;
        explainAction(path, gestures.targets(), output);
        return output.str();
    }
    static std::string names(std::vector<Layer> const& layers) {
        std::string result;
        for (Layer const& layer : layers)
            result += layer.name + " ";
        return result;
    }
    std::string state() const { return names(editor.document().layers()) + "| " + names(gestures.selected()); }

    // Expects one undo step, and undoes and redoes it.
    template <class Gesture>
    void expectStep(std::string const& after, Gesture gesture) {
        std::string const before = state();
        int const steps = editor.history()->getNbUndoableCommands();
        gesture();
        EXPECT_EQ(after, state());
        EXPECT_EQ(steps + 1, editor.history()->getNbUndoableCommands());
        editor.history()->undo();
        EXPECT_EQ(before, state());
        editor.history()->redo();
        EXPECT_EQ(after, state());
    }

    EditActions const actions;
    Editor editor;
    Gestures gestures{editor};
};

TEST_F(GesturesTest, SelectionsAreStepsOfTheHistory) {
    expectStep("a b c | b a ", [&] { gestures.select({"b", "a"}); });
    expectStep("a b c | c ", [&] { gestures.select({"c"}); });
    expectStep("a b c | ", [&] { gestures.select({}); });
    EXPECT_THROW(gestures.select({"a", "x"}), DocumentError);
    EXPECT_EQ("a b c | ", state());
}

TEST_F(GesturesTest, MenusChangeWithTheSelection) {
    EXPECT_EQ("Set Canvas\n", menu()) << "of the document";
    gestures.select({"c"});
    EXPECT_EQ("Arrange\n  Lower                       Ctrl+PageDown\n  Move\n  Nudge\n  Reorder\n"
              "Edit\n  Remove                      Delete\n  Rename                      F2\n"
              "Look\n  Blend\n    [x] over\n    [ ] add\n    [ ] multiply\n    [ ] screen\n  Opacity\n"
              "  [x] Visible                 Ctrl+H\n",
        menu())
        << "the highest layer cannot be raised";
    EXPECT_EQ("  c: it is the highest layer\n", why("Raise"));
    EXPECT_THROW(why("Fly"), InputError);
    gestures.select({"a", "b", "c"});
    editor.setBlend(editor.document().layer("a").id, BlendMode::Add);
    EXPECT_NE(std::string::npos, menu().find("[-] over\n    [-] add\n    [ ] multiply"));
    EXPECT_NE(std::string::npos, menu().find("Raise (2 of 3)              Ctrl+PageUp"));
    EXPECT_EQ("  a: possible\n  b: possible\n  c: it is the highest layer\n", why("Raise"));
    gestures.select({"a"});
    editor.removeLayer(editor.document().layer("a").id);
    EXPECT_EQ("Set Canvas\n", menu()) << "a removed layer has no actions";
}

TEST_F(GesturesTest, AFewLettersFindAnAction) {
    auto const find = [&](char const* letters) {
        std::ostringstream output;
        findActions(letters, gestures.targets(), output);
        return output.str();
    };
    gestures.select({"c"});
    EXPECT_EQ("  Blend\n  Visible\n", find("bl"));
    EXPECT_EQ("  Raise (it is the highest layer)\n", find("rai"));
    EXPECT_EQ("", find("xyz"));
}

TEST_F(GesturesTest, ActionsWorkOnAllSelectedLayersInOneStep) {
    gestures.select({"a", "b"});
    auto const perform = [&](std::string const& path, Names const& arguments) {
        EditActions::perform(editor, path, gestures.selected(), arguments);
    };
    auto const performOnC = [&](std::string const& path, Names const& arguments) {
        EditActions::perform(editor, path, {editor.document().layer("c")}, arguments);
    };
    expectStep("a b c | a b ", [&] { perform("Blend > screen", {}); });
    EXPECT_EQ(BlendMode::Screen, editor.document().layer("b").placed.blend);
    expectStep("a b c | a b ", [&] { perform("Move", {"3", "-4"}); });
    EXPECT_EQ(-4, editor.document().layer("a").placed.y);
    expectStep("c | ", [&] { perform("Remove", {}); });
    EXPECT_THROW(performOnC("Fly", {}), InputError);
    EXPECT_THROW(performOnC("Raise", {}), InputError);
    EXPECT_THROW(performOnC("Move", {"3"}), InputError);
    expectStep("\"\\ two | ", [&] { performOnC("Rename", {"\"\\ two"}); });
    std::string options;
    for (Ko::ActOption const& option : EditActions::options(editor, "Opacity", editor.document().layers()))
        options += option.text + (option.isCurrent ? "* " : " ");
    EXPECT_EQ("0 0.25 0.5 0.75 1* ", options);
}

TEST_F(GesturesTest, ActionsWithACheckMarkChangeOnlyLayersThatAreOff) {
    editor.setBlend(editor.document().layer("a").id, BlendMode::Add);
    gestures.select({"a", "b"});
    expectStep("a b c | a b ", [&] { EditActions::perform(editor, "Blend > add", gestures.selected(), {}); });
    EXPECT_EQ(BlendMode::Add, editor.document().layer("b").placed.blend);
    editor.history()->undo();
    EXPECT_EQ(BlendMode::Add, editor.document().layer("a").placed.blend);
}

TEST_F(GesturesTest, CopiesArePastedAsTheyWereWithFreeNames) {
    EXPECT_THROW(gestures.copy(), InputError);
    EXPECT_THROW(gestures.paste(), InputError);
    gestures.select({"a", "c"});
    gestures.copy();
    editor.moveLayer(editor.document().layer("a").id, 50, 50);
    expectStep("a b c a copy c copy | a copy c copy ", [&] { gestures.paste(); });
    EXPECT_EQ(0, editor.document().layer("a copy").placed.x);
    expectStep("a b c a copy c copy a copy 2 c copy 2 | a copy 2 c copy 2 ", [&] { gestures.paste(); });
}

TEST_F(GesturesTest, CutLayersCanBePasted) {
    gestures.select({"b"});
    expectStep("a c | ", [&] { gestures.cut(); });
    EXPECT_EQ(Ko::DrClipboard::Cut, Ko::DrClipboard::getInstance().getSrcAction());
    expectStep("a c b | b ", [&] { gestures.paste(); });
}

TEST_F(GesturesTest, DropsPutLayersOrCopiesAboveTheirTarget) {
    using Ko::DrEffect;
    auto const move = [&](Names const& names, char const* target) { gestures.drag(names, target, DrEffect::Move); };
    expectStep("a c b | ", [&] { move({"c"}, "a"); });
    expectStep("b a c | ", [&] { move({"a", "c"}, "b"); });
    expectStep("a c b | ", [&] { move({"b"}, "c"); });
    EXPECT_THROW(move({"b"}, "b"), InputError);
    EXPECT_THROW(move({"x"}, "b"), DocumentError);
    EXPECT_THROW(move({}, "b"), InputError);
    EXPECT_EQ("a c b | ", state());
    expectStep("a a copy c copy c b | ", [&] {
        EXPECT_EQ(DrEffect::Copy, gestures.drag({"a", "c"}, "a", DrEffect::Copy));
    });
    expectStep("a a copy c copy c b b copy | ",
        [&] { EXPECT_EQ(DrEffect::Copy, gestures.drag({"b"}, "b", DrEffect::Link)) << "layers cannot be linked"; });
    EXPECT_FALSE(Ko::CmUndoGuard::isGuardActive());
}

} // namespace
