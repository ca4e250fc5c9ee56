#include "window/canvas.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <chrono>
#include <cmath>

namespace compositor::window {

namespace {

constexpr int margin = 24;
// Before a part that is not rendered yet is hatched.
constexpr std::chrono::milliseconds moment{150};

} // namespace

Canvas::Canvas(Session& session, QWidget* parent) : QWidget(parent), _session(session) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(240, 180);
    setAccessibleName(tr("Canvas"));
    setAccessibleDescription(tr("The picture. Arrow keys move the selected layers."));
    _staleTimer.setSingleShot(true);
    _staleTimer.setInterval(moment);
    connect(&_staleTimer, &QTimer::timeout, this, [this] {
        _showsStale = true;
        update();
    });
    connect(&_session, &Session::documentChanged, this, &Canvas::showDocument);
    connect(&_session, &Session::selectionChanged, this, qOverload<>(&Canvas::update));
    connect(&_tiles, &Tiles::rendered, this, [this](QRect const& area) {
        _hasNewFrame = true;
        update(toWidget(QRectF(area)));
        updateCurrent();
    });
    _tiles.show(_session.document(), _viewport.scale());
}

QSize Canvas::canvasSize() const {
    return {_session.document().canvas().width, _session.document().canvas().height};
}

void Canvas::showDocument(Document const& before) {
    bool const isResized = !(before.canvas() == _session.document().canvas());
    _tiles.show(_session.document(), _viewport.scale());
    if (isResized && _isFitted) return fit();
    if (isResized) Q_EMIT viewChanged();
    _tiles.request(visible());
    updateCurrent();
    if (isResized) return update();
    for (Layer const& layer : _session.selected()) {
        if (before.contains(layer.id)) updateOutline(before.layer(layer.id));
        updateOutline(layer);
    }
}

QRectF Canvas::outlineOf(Layer const& layer) const {
    Size const size = layer.placed.picture->size();
    return {_viewport.fromCanvas({double(layer.placed.x), double(layer.placed.y)}),
        QSizeF(size.width, size.height) * _viewport.zoom};
}

void Canvas::updateOutline(Layer const& layer) {
    QRectF const outline = outlineOf(layer);
    double const density = devicePixelRatioF();
    QRect const place = QRectF(outline.topLeft() / density, outline.size() / density).toAlignedRect();
    update(QRegion(place.adjusted(-3, -3, 3, 3)) - QRegion(place.adjusted(3, 3, -3, -3)));
}

void Canvas::fit() {
    _viewport.fit(canvasSize(), deviceSize(), static_cast<int>(margin * devicePixelRatioF()));
    viewHasChanged();
    _isFitted = true;
}

void Canvas::zoomTo(double zoom) {
    zoomBy(zoom / _viewport.zoom);
}

void Canvas::zoomBy(double factor) {
    QSizeF const view = deviceSize();
    _viewport.zoomBy(factor, QPointF(view.width() / 2, view.height() / 2));
    viewHasChanged();
}

void Canvas::viewHasChanged() {
    _isFitted = false;
    _tiles.show(_session.document(), _viewport.scale());
    _tiles.request(visible());
    updateCurrent();
    update();
    Q_EMIT zoomChanged(_viewport.zoom);
    Q_EMIT viewChanged();
}

ScrollRange Canvas::scrollRange(Qt::Orientation direction) const {
    return _viewport.range(direction, canvasSize(), deviceSize(), static_cast<int>(margin * devicePixelRatioF()));
}

void Canvas::scrollTo(Qt::Orientation direction, int value) {
    QPointF const to(direction == Qt::Horizontal ? -value : _viewport.origin.x(),
        direction == Qt::Vertical ? -value : _viewport.origin.y());
    scrollBy(to - _viewport.origin);
}

bool Canvas::isCurrent() const {
    return _tiles.isCurrent(visible());
}

void Canvas::updateCurrent() {
    bool const isNow = isCurrent();
    if (!isNow && !_staleTimer.isActive() && !_showsStale) _staleTimer.start();
    if (isNow) {
        _staleTimer.stop();
        if (std::exchange(_showsStale, false)) update();
    }
    if (isNow != std::exchange(_wasCurrent, isNow)) Q_EMIT currentChanged(isNow);
}

QPointF Canvas::placeOf(QPointF onCanvas) const {
    return _viewport.fromCanvas(onCanvas) / devicePixelRatioF();
}

QPointF Canvas::canvasPointAt(QPointF onWidget) const {
    return _viewport.toCanvas(onWidget * devicePixelRatioF());
}

// The highest layer that is not transparent there.
std::optional<Layer> Canvas::layerAt(QPointF onCanvas) const {
    auto const& layers = _session.document().layers();
    int const x = static_cast<int>(std::floor(onCanvas.x())), y = static_cast<int>(std::floor(onCanvas.y()));
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
        PlacedPicture const& placed = layer->placed;
        QPoint const inside(x - placed.x, y - placed.y);
        Size const size = placed.picture->size();
        if (!placed.isVisible || !QRect(0, 0, size.width, size.height).contains(inside)) continue;
        if (placed.picture->row(inside.y())[static_cast<std::size_t>(inside.x())].alpha > 0) return *layer;
    }
    return std::nullopt;
}

bool Canvas::event(QEvent* event) {
    // Escape belongs to the drag, not to a shortcut; the space bar to the view.
    if (event->type() == QEvent::ShortcutOverride) {
        int const key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Escape && isDragging()) || key == Qt::Key_Space) event->accept();
    }
    return QWidget::event(event);
}

void Canvas::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (_isFitted) return fit();
    _tiles.request(visible());
    updateCurrent();
    Q_EMIT viewChanged();
}

void Canvas::mousePressEvent(QMouseEvent* event) {
    bool const pans = event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && _spaceIsDown);
    if (pans && !_press) {
        _panFrom = event->position();
        setCursor(Qt::ClosedHandCursor);
    } else if (event->button() == Qt::LeftButton && !_panFrom) {
        press(*event);
    }
}

void Canvas::press(QMouseEvent const& event) {
    std::optional<Layer> const layer = layerAt(canvasPointAt(event.position()));
    bool const adds = event.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    if (!layer) {
        if (!adds) _session.select({});
        return;
    }
    if (adds) return _session.toggle(layer->id);
    if (!_session.isSelected(layer->id)) _session.select({layer->id});
    _press = Press{event.position(), *layer, {layer->name}};
    for (Layer const& other : _session.selected())
        if (other.id != layer->id) _press->names.push_back(other.name);
}

void Canvas::mouseMoveEvent(QMouseEvent* event) {
    Q_EMIT pointerMoved(canvasPointAt(event->position()).toPoint());
    if (_panFrom) {
        QPointF const from = std::exchange(*_panFrom, event->position());
        scrollBy((event->position() - from) * devicePixelRatioF());
    } else if (_press) {
        drag(*_press, *event);
    }
}

void Canvas::drag(Press& press, QMouseEvent const& event) {
    QPointF const way = event.position() - press.onWidget;
    _session.attempt([&] {
        if (!isDragging()) {
            if (way.manhattanLength() < QApplication::startDragDistance()) return;
            if (press.hasDragged) return;
            press.hasDragged = true;
            _session.gestures().grab(press.names);
            setCursor(Qt::SizeAllCursor);
        }
        QPoint const distance = (way * devicePixelRatioF() / _viewport.zoom).toPoint();
        _session.gestures().pull({press.layer.placed.x + distance.x(), press.layer.placed.y + distance.y()});
    });
}

void Canvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && _press) {
        Press const press = std::move(*_press);
        _press.reset();
        if (isDragging())
            _session.attempt([this] { _session.gestures().release(); });
        else if (!press.hasDragged && press.names.size() > 1)
            _session.select({press.layer.id});
    }
    _panFrom.reset();
    _spaceIsDown ? setCursor(Qt::OpenHandCursor) : unsetCursor();
}

void Canvas::cancelDrag() {
    _press.reset();
    unsetCursor();
    if (isDragging()) _session.attempt([this] { _session.gestures().cancel(); });
}

void Canvas::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && _press) return cancelDrag();
    if (event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat() && !_press) setCursor(Qt::OpenHandCursor);
        _spaceIsDown = true;
        return;
    }
    if (!nudge(*event)) QWidget::keyPressEvent(event);
}

bool Canvas::nudge(QKeyEvent const& event) {
    std::map<int, QPoint> const ways{
        {Qt::Key_Left, {-1, 0}}, {Qt::Key_Right, {1, 0}}, {Qt::Key_Up, {0, -1}}, {Qt::Key_Down, {0, 1}}};
    auto const way = ways.find(event.key());
    if (way == ways.end() || isDragging() || _session.selected().empty()) return false;
    QPoint const distance = way->second * (event.modifiers() & Qt::ShiftModifier ? 10 : 1);
    return _session.perform("Nudge", {std::to_string(distance.x()), std::to_string(distance.y())});
}

void Canvas::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->isAutoRepeat()) return QWidget::keyReleaseEvent(event);
    _spaceIsDown = false;
    if (!_press && !_panFrom) unsetCursor();
}

void Canvas::wheelEvent(QWheelEvent* event) {
    if (event->modifiers() & Qt::ControlModifier) {
        double const notches = event->angleDelta().y() / 120.0;
        _viewport.zoomBy(std::pow(Viewport::zoomStep, notches), event->position() * devicePixelRatioF());
        return viewHasChanged();
    }
    QPointF const distance = event->pixelDelta().isNull() ? QPointF(event->angleDelta()) / 2 : event->pixelDelta();
    scrollBy((event->modifiers() & Qt::ShiftModifier ? distance.transposed() : distance) * devicePixelRatioF());
}

void Canvas::scrollBy(QPointF device) {
    _viewport.origin += device.toPoint();
    viewHasChanged();
}

} // namespace compositor::window
