#pragma once

#include "window/session.h"
#include "window/tiles.h"
#include "window/viewport.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <optional>

namespace compositor::window {

/// Shows the document and moves its layers.
///
/// A click selects the highest visible layer under the pointer; dragging moves it, or all selected layers if it is one of them, as one
/// step of the history; Escape takes the drag back. The arrow keys nudge the selected layers, by ten pixels with Shift. The wheel scrolls, zooms with Ctrl; the middle button or
/// the space bar moves the view. What the last frame shows wrongly is hatched when it stays so for longer than a moment.
class Canvas : public QWidget {
    Q_OBJECT

public:
    explicit Canvas(Session& session, QWidget* parent = nullptr);

    void fit();
    void zoomTo(double zoom);
    void zoomBy(double factor);
    [[nodiscard]] double zoom() const { return _viewport.zoom; }
    /// Whether all that is visible is rendered as the document is.
    [[nodiscard]] bool isCurrent() const;
    [[nodiscard]] bool isDragging() const { return _session.gestures().isDragging(); }
    /// Takes the present drag back, if there is one.
    void cancelDrag();
    [[nodiscard]] ScrollRange scrollRange(Qt::Orientation direction) const;
    /// @param value in the range.
    void scrollTo(Qt::Orientation direction, int value);
    /// The place of a point of the canvas on the widget.
    [[nodiscard]] QPointF placeOf(QPointF onCanvas) const;
    [[nodiscard]] QPointF canvasPointAt(QPointF onWidget) const;

Q_SIGNALS:
    void zoomChanged(double zoom);
    /// Another part of the canvas is visible, or its size has changed.
    void viewChanged();
    /// The pointer is over a pixel of the canvas, which may lie outside of it.
    void pointerMoved(QPoint const& onCanvas);
    /// The last frame is complete, or no longer is.
    void currentChanged(bool isCurrent);
    /// A frame with changes has been painted.
    void framePainted();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct Press {
        QPointF onWidget;
        Layer layer;
        // All of these are dragged, the pressed one first.
        std::vector<std::string> names;
        bool hasDragged = false;
    };

    QSize canvasSize() const;
    QSize deviceSize() const { return (QSizeF(size()) * devicePixelRatioF()).toSize(); }
    QRect visible() const { return _viewport.visible(deviceSize()); }
    QRectF toDevice(QRectF const& scaled) const;
    QRect toWidget(QRectF const& scaled) const;
    std::optional<Layer> layerAt(QPointF onCanvas) const;
    void showDocument(Document const& before);
    QRectF outlineOf(Layer const& layer) const;
    void updateOutline(Layer const& layer);
    void viewHasChanged();
    void updateCurrent();
    void press(QMouseEvent const& event);
    void drag(Press& press, QMouseEvent const& event);
    void scrollBy(QPointF device);
    bool nudge(QKeyEvent const& event);
    void paintDocument(QPainter& painter, QRectF const& exposed);
    void paintChecker(QPainter& painter, QRectF const& area);
    void paintGrid(QPainter& painter, QRectF const& exposed);
    void paintSelection(QPainter& painter);

    Session& _session;
    Viewport _viewport;
    Tiles _tiles{this};
    std::optional<Press> _press;
    std::optional<QPointF> _panFrom;
    bool _spaceIsDown = false;
    bool _isFitted = true;
    bool _wasCurrent = true;
    bool _hasNewFrame = false;
    bool _showsStale = false;
    QTimer _staleTimer;
};

} // namespace compositor::window
