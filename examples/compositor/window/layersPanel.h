#pragma once

#include "host/longStep.h"
#include "window/layersModel.h"

#include <QComboBox>
#include <QListView>
#include <QSlider>
#include <QSpinBox>
#include <QWidget>
#include <memory>

namespace compositor::window {

/// The list of layers, with the opacity and the blend mode of those that are selected. The slider changes the picture while it is moved,
/// and is one step.
class LayersPanel : public QWidget {
    Q_OBJECT

public:
    explicit LayersPanel(Session& session, QWidget* parent = nullptr);

    [[nodiscard]] QListView& list() const { return *_list; }
    /// Begins to rename the current layer in its place.
    void renameCurrent();

private:
    void arrange();
    void connectControls();
    void readSelection();
    void showSelection();
    void showValues();
    void setOpacity(int percent);
    void changeOpacity(int percent);

    Session& _session;
    LayersModel* _model;
    // Owned by their parents.
    QListView* _list;
    QSlider* _opacity;
    QSpinBox* _percent;
    QComboBox* _blend;
    std::unique_ptr<LongStep> _slide;
    bool _isShowing = false;
};

} // namespace compositor::window
