#include "window/canvas.h"

#include <QPaintEvent>
#include <QPainter>
#include <cmath>

namespace compositor::window {

namespace {

constexpr double gridFromZoom = 8.0;
// In pixels of the widget.
constexpr int checkerCell = 8;

bool isDark(QPalette const& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QBrush checker(bool isDark, double density) {
    int const cell = std::max(1, static_cast<int>(std::lround(checkerCell * density)));
    QImage pattern(2 * cell, 2 * cell, QImage::Format_RGB32);
    pattern.fill(isDark ? QColor(0x4a, 0x4a, 0x4a) : QColor(0xff, 0xff, 0xff));
    QPainter painter(&pattern);
    QColor const other = isDark ? QColor(0x3a, 0x3a, 0x3a) : QColor(0xdc, 0xdc, 0xdc);
    painter.fillRect(0, 0, cell, cell, other);
    painter.fillRect(cell, cell, cell, cell, other);
    painter.end();
    return QBrush(pattern);
}

} // namespace

QRectF Canvas::toDevice(QRectF const& scaled) const {
    double const ratio = _viewport.zoom / _viewport.scale();
    return {scaled.topLeft() * ratio + _viewport.origin, scaled.size() * ratio};
}

QRect Canvas::toWidget(QRectF const& scaled) const {
    QRectF const device = toDevice(scaled);
    double const density = devicePixelRatioF();
    return QRectF(device.topLeft() / density, device.size() / density).toAlignedRect().adjusted(-1, -1, 1, 1);
}

void Canvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    double const density = devicePixelRatioF();
    // The tiles have pixels of the device.
    painter.scale(1.0 / density, 1.0 / density);
    QRectF const exposed(QPointF(event->rect().topLeft()) * density, QSizeF(event->rect().size()) * density);
    painter.fillRect(exposed, isDark(palette()) ? QColor(0x23, 0x24, 0x27) : QColor(0xc4, 0xc6, 0xca));
    paintDocument(painter, exposed);
    if (_viewport.zoom >= gridFromZoom) paintGrid(painter, exposed);
    paintSelection(painter);
    _tiles.request(visible());
    if (std::exchange(_hasNewFrame, false)) Q_EMIT framePainted();
}

void Canvas::paintDocument(QPainter& painter, QRectF const& exposed) {
    QRectF const whole = toDevice(QRectF(QPointF(0, 0), _tiles.size()));
    paintChecker(painter, whole & exposed);
    painter.save();
    painter.setClipRect(whole & exposed);
    for (Tiles::Part const& part : _tiles.parts(visible())) {
        QRectF const place = toDevice(part.place);
        if (!place.intersects(exposed)) continue;
        painter.drawImage(place, *part.image);
        if (part.isStale && _showsStale) painter.fillRect(place, QBrush(QColor(128, 128, 128, 90), Qt::BDiagPattern));
    }
    painter.restore();
}

void Canvas::paintChecker(QPainter& painter, QRectF const& area) {
    painter.setBrushOrigin(_viewport.origin);
    painter.fillRect(area, checker(isDark(palette()), devicePixelRatioF()));
}

void Canvas::paintGrid(QPainter& painter, QRectF const& exposed) {
    QRectF const area = toDevice(QRectF(QPointF(0, 0), _tiles.size())) & exposed;
    if (area.isEmpty()) return;
    QRect const cells =
        QRectF(_viewport.toCanvas(area.topLeft()), _viewport.toCanvas(area.bottomRight())).toAlignedRect();
    QList<QLineF> lines;
    for (int x = cells.left(); x <= cells.right() + 1; ++x) {
        double const place = std::round(_viewport.fromCanvas({double(x), 0}).x()) + 0.5;
        lines.append({place, area.top(), place, area.bottom()});
    }
    for (int y = cells.top(); y <= cells.bottom() + 1; ++y) {
        double const place = std::round(_viewport.fromCanvas({0, double(y)}).y()) + 0.5;
        lines.append({area.left(), place, area.right(), place});
    }
    painter.setPen(QPen(QColor(128, 128, 128, 110), 1));
    painter.drawLines(lines);
}

// Two lines, so that they are seen on every picture.
void Canvas::paintSelection(QPainter& painter) {
    double const density = devicePixelRatioF();
    painter.setBrush(Qt::NoBrush);
    for (Layer const& layer : _session.selected()) {
        QRectF const outline = outlineOf(layer);
        painter.setPen(QPen(QColor(0, 0, 0, 160), 3 * density));
        painter.drawRect(outline);
        painter.setPen(QPen(palette().color(QPalette::Highlight).lighter(120), density));
        painter.drawRect(outline);
    }
}

} // namespace compositor::window
