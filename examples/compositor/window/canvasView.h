#pragma once

#include "window/canvas.h"

#include <QScrollBar>

namespace compositor::window {

/// A canvas with scroll bars, which follow its view and move it. They are always there, disabled where all of the picture is
/// visible, so that the canvas keeps its size.
class CanvasView : public QWidget {
public:
    /// @param canvas becomes a child of the view.
    explicit CanvasView(Canvas& canvas, QWidget* parent = nullptr);

private:
    QScrollBar* addBar(Qt::Orientation orientation, QString const& name);
    void follow(QScrollBar& bar);

    Canvas& _canvas;
};

} // namespace compositor::window
