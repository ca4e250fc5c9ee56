#include "window/canvas.h"
#include "tests/examples/compositor/window/windowTest.h"

#include <random>

namespace {

using namespace compositor;
using namespace KoTest;

class CanvasTest : public WindowTest {};

TEST_F(CanvasTest, ADragIsOneStepAndItsWayIsShown) {
    press(at(10, 10));
    EXPECT_FALSE(window.canvas().isDragging()) << "a click moves nothing";
    move(at(50, 40));
    EXPECT_TRUE(window.canvas().isDragging());
    EXPECT_EQ(QPoint(40, 30), placeOf("back"));
    EXPECT_EQ(QColor(200, 0, 0), shownAt(115, 85)) << "during the drag";
    move(at(70, 30));
    release(at(70, 30));
    EXPECT_EQ(QPoint(60, 20), placeOf("back"));
    EXPECT_EQ(1, steps());
    EXPECT_EQ("Drag back", editor.history()->getUndoText());
    editor.history()->undo();
    EXPECT_EQ(QPoint(0, 0), placeOf("back"));
    EXPECT_EQ(QColor(200, 0, 0), shownAt(5, 5));
}

TEST_F(CanvasTest, EscapeTakesADragBackAndKeepsWhatCanBeRedone) {
    editor.moveLayer(id("front"), 100, 100);
    editor.history()->undo();
    press(at(10, 10));
    move(at(80, 80));
    key(Qt::Key_Escape);
    EXPECT_EQ(QPoint(0, 0), placeOf("back"));
    move(at(90, 90));
    release(at(90, 90));
    EXPECT_EQ(QPoint(0, 0), placeOf("back")) << "the rest of the gesture moves nothing";
    EXPECT_EQ(0, steps());
    EXPECT_TRUE(editor.history()->canRedo());
}

TEST_F(CanvasTest, ArrowKeysNudgeTheSelectedLayerInOneStep) {
    key(Qt::Key_Right);
    EXPECT_EQ(0, steps()) << "nothing is selected";
    QTest::mouseClick(&window.canvas(), Qt::LeftButton, {}, at(160, 110));
    key(Qt::Key_Right);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Left);
    EXPECT_EQ(QPoint(150, 110), placeOf("front"));
    EXPECT_EQ(1, steps());
}

TEST_F(CanvasTest, AClickSelectsTheHighestLayerThatCanBeSeen) {
    auto const selected = [this] {
        std::string names;
        for (Layer const& layer : window.session().selected())
            names += layer.name + " ";
        return names;
    };
    auto const click = [this](QPoint place, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(&window.canvas(), Qt::LeftButton, modifiers, place);
    };
    editor.moveLayer(id("front"), 0, 0);
    click(at(10, 10));
    EXPECT_EQ("front ", selected());
    editor.setVisible(id("front"), false);
    click(at(10, 10), Qt::ShiftModifier);
    EXPECT_EQ("front back ", selected());
    click(at(290, 190));
    EXPECT_EQ("", selected()) << "where there is no layer";
}

TEST_F(CanvasTest, IsStaleUntilAChangeIsRendered) {
    bool isCurrent = true;
    QObject::connect(&window.canvas(), &window::Canvas::currentChanged, [&](bool now) { isCurrent = now; });
    paint(id("back"), {0, 200, 0, 255});
    EXPECT_FALSE(window.canvas().isCurrent());
    EXPECT_FALSE(isCurrent);
    EXPECT_EQ(QColor(0, 200, 0), shownAt(5, 5));
    EXPECT_TRUE(isCurrent);
    editor.moveLayer(id("back"), 5000, 5000);
    waitUntil([this] { return window.canvas().isCurrent(); });
    editor.moveLayer(id("back"), 6000, 6000);
    EXPECT_TRUE(window.canvas().isCurrent()) << "nothing that is visible has changed";
}

TEST_F(CanvasTest, KeepsTheSameDocumentThroughRandomGesturesAndUndo) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    auto const number = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
    std::vector<Layer> const before = editor.document().layers();
    for (int gesture = 0; gesture < 500; ++gesture) {
        press(at(number(300), number(200)));
        for (int moves = number(4); moves > 0; --moves)
            move(at(number(300), number(200)));
        if (number(3) == 0) key(Qt::Key_Escape);
        release(at(number(300), number(200)));
        if (number(4) == 0) key(Qt::Key_Right + number(2), number(2) ? Qt::ShiftModifier : Qt::NoModifier);
        if (number(9) == 0) editor.history()->tryUndo();
    }
    while (editor.history()->canUndo())
        editor.history()->undo();
    EXPECT_EQ(before, editor.document().layers()) << "seed " << seed;
    EXPECT_EQ(QColor(200, 0, 0), shownAt(5, 5));
}

TEST(Tiles, RenderOnlyWhatIsAskedForAndHasChanged) {
    Document document({2000, 2000});
    auto const picture = std::make_shared<Picture const>(Size{100, 100});
    document.insert(0, {document.newId(), "a", {picture}});
    window::Tiles tiles;
    QRect arrived;
    QObject::connect(&tiles, &window::Tiles::rendered, [&](QRect const& area) { arrived = area; });
    QRect const visible(300, 0, 500, 200);
    Ko::QtEventLoop const events;
    auto const render = [&] {
        arrived = {};
        tiles.request(visible);
        waitUntil([&] { return tiles.isCurrent(visible); });
        return arrived;
    };
    tiles.show(document, 1.0);
    EXPECT_EQ(QRect(256, 0, 768, 256), render()) << "the tiles that are visible";
    Layer layer = document.layers().front();
    layer.placed.x = 300;
    document.replace(layer);
    tiles.show(document, 1.0);
    EXPECT_FALSE(tiles.isCurrent(visible));
    EXPECT_EQ(QRect(256, 0, 256, 256), render()) << "the tile that shows the layer now";
    tiles.show(document, 0.5);
    EXPECT_FALSE(tiles.isCurrent(visible));
    EXPECT_EQ(3u, tiles.parts(visible).size()) << "the tiles of the scale before";
    EXPECT_EQ(QSize(1000, 1000), tiles.size());
    render();
    EXPECT_FALSE(tiles.parts(visible).front().isStale);
}

} // namespace
