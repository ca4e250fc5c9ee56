#include "host/gestures.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "host/actions.h"

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
        gestures.showMenu(output);
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
    EXPECT_EQ("Compositor\n  Set Canvas\n", menu()) << "of the document";
    gestures.select({"c"});
    EXPECT_EQ("Compositor\n  Blend (c)\n    add (c)\n    multiply (c)\n    over (c)\n    screen (c)\n  Lower (c)\n  "
              "Move (c)\n"
              "  Nudge (c)\n  Opacity (c)\n  Remove (c)\n  Rename (c)\n  Reorder (c)\n",
        menu())
        << "the highest layer cannot be raised";
    gestures.select({"a"});
    EXPECT_NE(std::string::npos, menu().find("Raise (a)"));
    EXPECT_EQ(std::string::npos, menu().find("Lower"));
    editor.removeLayer(editor.document().layer("a").id);
    EXPECT_EQ("Compositor\n  Set Canvas\n", menu()) << "a removed layer has no actions";
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
    EXPECT_THROW(performOnC("Fly", {}), ScriptError);
    EXPECT_THROW(performOnC("Raise", {}), ScriptError);
    EXPECT_THROW(performOnC("Move", {"3"}), ScriptError);
    expectStep("\"\\ two | ", [&] { performOnC("Rename", {"\"\\ two"}); });
    EXPECT_EQ((Names{"0", "0.25", "0.5", "0.75", "1"}),
        EditActions::options(editor, "Opacity", editor.document().layers().front()));
}

TEST_F(GesturesTest, CopiesArePastedAsTheyWereWithFreeNames) {
    EXPECT_THROW(gestures.copy(), ScriptError);
    EXPECT_THROW(gestures.paste(), ScriptError);
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

TEST_F(GesturesTest, DropsPutLayersAboveTheirTarget) {
    expectStep("a c b | ", [&] { gestures.drag({"c"}, "a"); });
    expectStep("b a c | ", [&] { gestures.drag({"a", "c"}, "b"); });
    expectStep("a c b | ", [&] { gestures.drag({"b"}, "c"); });
    EXPECT_THROW(gestures.drag({"b"}, "b"), ScriptError);
    EXPECT_THROW(gestures.drag({"x"}, "b"), DocumentError);
    EXPECT_EQ("a c b | ", state());
    EXPECT_FALSE(Ko::CmUndoGuard::isGuardActive());
}

} // namespace
