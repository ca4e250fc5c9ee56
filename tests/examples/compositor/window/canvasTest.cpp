#include "window/canvas.h"
#include "tests/examples/compositor/window/windowTest.h"

#include <map>
#include <random>
#include <set>

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

TEST_F(CanvasTest, DraggingOneOfSeveralSelectedLayersMovesAllInOneStep) {
    window.session().select({id("front"), id("back")});
    press(at(10, 10));
    move(at(60, 40));
    move(at(30, 50));
    EXPECT_EQ(QPoint(20, 40), placeOf("back"));
    EXPECT_EQ(QPoint(170, 140), placeOf("front"));
    release(at(30, 50));
    EXPECT_EQ(1, steps());
    EXPECT_EQ("Drag 2 layers", editor.history()->getUndoText());
    editor.history()->undo();
    EXPECT_EQ(QPoint(0, 0), placeOf("back"));
    EXPECT_EQ(QPoint(150, 100), placeOf("front"));
    EXPECT_EQ(2u, window.session().selected().size());
    press(at(10, 10));
    EXPECT_EQ(2u, window.session().selected().size()) << "it may become a drag";
    release(at(10, 10));
    ASSERT_EQ(1u, window.session().selected().size());
    EXPECT_EQ("back", window.session().selected().front().name);
}

/// What the gestures should do: layers that do not change their sizes, and the states that undo leads to.
class Model {
public:
    using Places = std::map<std::string, QPoint>;
    explicit Model(Places start) : _states{std::move(start)} {}

    Places places() const { return _states[_current]; }
    std::size_t steps() const { return _current; }
    // The highest layer at a point; "front" is above "back".
    std::string at(QPoint point) const {
        for (char const* const name : {"front", "back"})
            if (QRect(_states[_current].at(name), QSize(80, 60)).contains(point)) return name;
        return {};
    }
    void press(QPoint point) {
        std::string const hit = at(point);
        if (hit.empty())
            selected.clear();
        else if (!selected.contains(hit))
            selected = {hit};
    }
    void moveSelected(QPoint distance) {
        if (selected.empty()) return;
        Places next = places();
        for (std::string const& name : selected)
            next[name] += distance;
        _states.resize(_current + 1);
        _states.push_back(next);
        ++_current;
    }
    void undo() { _current -= _current > 0; }
    void redo() { _current += _current + 1 < _states.size(); }

    std::set<std::string> selected;

private:
    std::vector<Places> _states;
    std::size_t _current = 0;
};

class RandomGestures : public CanvasTest {
public:
    int number(int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); }
    QPoint point() { return {number(300), number(200)}; }
    // The exact place, without rounding.
    QPoint on(QPoint onCanvas) { return window.canvas().placeOf(onCanvas).toPoint(); }
    Model::Places places() { return {{"back", placeOf("back")}, {"front", placeOf("front")}}; }
    void select() {
        model.selected.clear();
        for (char const* const name : {"back", "front"})
            if (number(2)) model.selected.insert(name);
        std::vector<LayerId> ids;
        for (std::string const& name : model.selected)
            ids.push_back(id(name));
        window.session().select(ids);
    }
    void drag() {
        QPoint const from = point();
        QPoint to = point();
        if (to == from) to.rx() += 1;
        bool const isHit = !model.at(from).empty(), isCancelled = number(3) == 0;
        model.press(from);
        press(on(from));
        move(on(from + QPoint(50, 0)));
        move(on(to));
        if (isCancelled) key(Qt::Key_Escape);
        release(on(to));
        if (isHit && !isCancelled) model.moveSelected(to - from);
    }
    void click() {
        QPoint const place = point();
        std::string const hit = model.at(place);
        model.selected = hit.empty() ? std::set<std::string>() : std::set{hit};
        press(on(place));
        release(on(place));
    }
    void undo() {
        editor.history()->tryUndo();
        model.undo();
    }
    void redo() {
        editor.history()->tryRedo();
        model.redo();
    }

    unsigned const seed = std::random_device()();
    std::mt19937 random{seed};
    Model model{places()};
};

TEST_F(RandomGestures, DoWhatAModelDoes) {
    using Gesture = void (RandomGestures::*)();
    Gesture const gestures[] = {&RandomGestures::drag, &RandomGestures::drag, &RandomGestures::click,
        &RandomGestures::select, &RandomGestures::undo, &RandomGestures::redo};
    for (int step = 0; step < 500; ++step) {
        (this->*gestures[number(6)])();
        ASSERT_EQ(model.places(), places()) << "seed " << seed << ", step " << step;
        ASSERT_EQ(model.steps(), static_cast<std::size_t>(steps())) << "seed " << seed << ", step " << step;
        std::set<std::string> selected;
        for (Layer const& layer : window.session().selected())
            selected.insert(layer.name);
        ASSERT_EQ(model.selected, selected) << "seed " << seed << ", step " << step;
    }
    while (editor.history()->canUndo())
        editor.history()->undo();
    EXPECT_EQ(QPoint(150, 100), placeOf("front"));
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
