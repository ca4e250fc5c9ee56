#include "window/layersPanel.h"
#include "tests/examples/compositor/window/windowTest.h"

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QMimeData>
#include <QSlider>
#include <memory>
#include <random>

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class LayersPanelTest : public WindowTest {
protected:
    QAbstractItemModel& model() { return *window.layers().list().model(); }
    std::string rows() {
        std::string names;
        for (int row = 0; row < model().rowCount(); ++row)
            names += model().index(row, 0).data().toString().toStdString() + " ";
        return names;
    }
};

TEST_F(LayersPanelTest, EditsInTheListAreSteps) {
    EXPECT_EQ("front back ", rows());
    QModelIndex const front = model().index(0, 0);
    EXPECT_TRUE(model().setData(front, "sign", Qt::EditRole));
    EXPECT_EQ("sign back ", rows());
    EXPECT_FALSE(model().setData(front, "back", Qt::EditRole)) << "the name is taken";
    EXPECT_TRUE(model().setData(front, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_FALSE(editor.document().layer("sign").placed.isVisible);
    EXPECT_EQ(Qt::Unchecked, model().data(front, Qt::CheckStateRole).value<Qt::CheckState>());
    EXPECT_EQ(2, steps());
    editor.history()->undo();
    editor.history()->undo();
    EXPECT_EQ("front back ", rows());
}

TEST_F(LayersPanelTest, ADropMovesTheDraggedLayersInOneStep) {
    editor.addLayer("third", Picture({1, 1}));
    editor.addLayer("fourth", Picture({1, 1}));
    ASSERT_EQ("fourth third front back ", rows());
    std::unique_ptr<QMimeData> const dragged(model().mimeData({model().index(0, 0), model().index(2, 0)}));
    EXPECT_TRUE(model().dropMimeData(dragged.get(), Qt::MoveAction, 4, 0, {}));
    EXPECT_EQ("third back fourth front ", rows());
    EXPECT_EQ(3, steps());
    std::unique_ptr<QMimeData> const back(model().mimeData({model().index(1, 0)}));
    EXPECT_TRUE(model().dropMimeData(back.get(), Qt::MoveAction, 0, 0, {}));
    EXPECT_EQ("back third fourth front ", rows());
    QMimeData foreign;
    foreign.setText("back");
    EXPECT_FALSE(model().dropMimeData(&foreign, Qt::MoveAction, 0, 0, {}));
}

TEST_F(LayersPanelTest, SlidingTheOpacityIsOneStep) {
    window.session().select({id("front"), id("back")});
    auto& slider = *window.layers().findChild<QSlider*>();
    Q_EMIT slider.sliderPressed();
    for (int const percent : {80, 40, 25})
        slider.setValue(percent);
    EXPECT_FLOAT_EQ(0.25f, editor.document().layer("front").placed.opacity);
    Q_EMIT slider.sliderReleased();
    EXPECT_FLOAT_EQ(0.25f, editor.document().layer("back").placed.opacity);
    EXPECT_EQ(1, steps());
    editor.history()->undo();
    EXPECT_EQ(100, slider.value());
}

TEST_F(LayersPanelTest, ShowsTheSelectionOfTheDocument) {
    auto const& mode = *window.layers().findChild<QComboBox*>();
    EXPECT_FALSE(mode.isEnabled());
    editor.setBlend(id("back"), BlendMode::Screen);
    window.session().select({id("back")});
    EXPECT_TRUE(mode.isEnabled());
    EXPECT_EQ("screen", mode.currentText().toStdString());
    EXPECT_EQ(1, window.layers().list().selectionModel()->selectedIndexes().front().row());
    window.layers().list().setCurrentIndex(model().index(0, 0));
    EXPECT_TRUE(window.session().isSelected(id("front")));
    EXPECT_FALSE(window.session().isSelected(id("back")));
}

TEST_F(LayersPanelTest, TheModelFollowsRandomEdits) {
    QAbstractItemModelTester const tester(&model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    for (int step = 0; step < 300; ++step) {
        auto const& layers = editor.document().layers();
        std::size_t const index = layers.empty() ? 0 : random() % layers.size();
        switch (layers.empty() ? 0 : random() % 6) {
        case 0:
            editor.addLayer(editor.freeName("new"), Picture({2, 2}));
            break;
        case 1:
            editor.removeLayer(layers[index].id);
            break;
        case 2:
            editor.reorderLayer(layers[index].id, random() % layers.size());
            break;
        case 3:
            editor.setVisible(layers[index].id, random() % 2 == 0);
            break;
        case 4:
            editor.history()->tryUndo();
            break;
        default:
            editor.history()->tryRedo();
        }
        std::string expected;
        for (auto layer = editor.document().layers().rbegin(); layer != editor.document().layers().rend(); ++layer)
            expected += layer->name + " ";
        ASSERT_EQ(expected, rows()) << "seed " << seed << ", step " << step;
    }
}

} // namespace
