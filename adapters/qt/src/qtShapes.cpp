#include "adapters/qt/src/qtShapes.h"

#include "adapters/qt/src/qtOwned.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace Ko {
namespace {

// The drawings are on a field of 16 by 16.
QPolygonF polygon(std::initializer_list<QPointF> points) {
    return QPolygonF(QList<QPointF>(points));
}

void drawStep(QPainter& painter) {
    painter.setBrush(painter.pen().color());
    painter.drawEllipse(QPointF(8, 8), 2, 2);
}

void drawGroup(QPainter& painter) {
    painter.drawRoundedRect(QRectF(2.5, 5.5, 8, 8), 1.5, 1.5);
    painter.drawPolyline(polygon({{5.5, 2.5}, {13.5, 2.5}, {13.5, 10.5}}));
}

void drawSaved(QPainter& painter) {
    painter.drawPolygon(polygon({{2.5, 2.5}, {11, 2.5}, {13.5, 5}, {13.5, 13.5}, {2.5, 13.5}}));
    painter.drawRect(QRectF(5.5, 9, 5, 4.5));
    painter.drawRect(QRectF(5.5, 2.5, 4, 3));
}

void drawRetry(QPainter& painter) {
    painter.drawArc(QRectF(3, 3, 10, 10), 60 * 16, 290 * 16);
    painter.setBrush(painter.pen().color());
    painter.drawPolygon(polygon({{10.2, 1.2}, {14, 3.8}, {10, 6}}));
}

void drawWaiting(QPainter& painter) {
    painter.drawEllipse(QRectF(2.5, 2.5, 11, 11));
    painter.drawPolyline(polygon({{8, 5}, {8, 8.2}, {10.5, 9.5}}));
}

void drawSign(QPainter& painter) {
    painter.drawLine(QPointF(8, 6), QPointF(8, 9.5));
    painter.drawPoint(QPointF(8, 11.7));
}

void drawOnField(QPainter& painter, QtShape shape) {
    switch (shape) {
    case QtShape::Step:
        return drawStep(painter);
    case QtShape::Group:
        return drawGroup(painter);
    case QtShape::Saved:
        return drawSaved(painter);
    case QtShape::Pause:
        painter.fillRect(QRectF(4, 3, 3, 10), painter.pen().color());
        return painter.fillRect(QRectF(9, 3, 3, 10), painter.pen().color());
    case QtShape::Resume:
        painter.setBrush(painter.pen().color());
        return painter.drawPolygon(polygon({{5, 3.5}, {12.5, 8}, {5, 12.5}}));
    case QtShape::Cancel:
        painter.drawLine(QPointF(4, 4), QPointF(12, 12));
        return painter.drawLine(QPointF(12, 4), QPointF(4, 12));
    case QtShape::Mixed:
        return painter.drawLine(QPointF(4, 8), QPointF(12, 8));
    case QtShape::Retry:
        return drawRetry(painter);
    case QtShape::Done:
        return painter.drawPolyline(polygon({{3, 8.5}, {6.5, 12}, {13, 4.5}}));
    case QtShape::Failed:
        painter.drawEllipse(QRectF(2, 2, 12, 12));
        return drawSign(painter);
    case QtShape::Waiting:
        return drawWaiting(painter);
    }
}

/// Draws a shape for each size, state of the widget and palette.
class ShapeEngine : public QIconEngine {
public:
    ShapeEngine(QtShape shape, bool isDimmed) : _shape(shape), _isDimmed(isDimmed) {}

    void paint(QPainter* painter, QRect const& place, QIcon::Mode mode, QIcon::State) override {
        auto const group = mode == QIcon::Disabled || _isDimmed ? QPalette::Disabled : QPalette::Active;
        auto const role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        painter->save();
        painter->setPen(QGuiApplication::palette().color(group, role));
        qtDraw(*painter, _shape, place);
        painter->restore();
    }
    QPixmap pixmap(QSize const& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }
    QIconEngine* clone() const override { return qtOwned<ShapeEngine>(*this); }

private:
    QtShape _shape;
    bool _isDimmed;
};

} // namespace

void qtDraw(QPainter& painter, QtShape shape, QRectF const& place) {
    painter.save();
    qreal const side = std::min(place.width(), place.height());
    painter.translate(place.center() - QPointF(side / 2, side / 2));
    painter.scale(side / 16, side / 16);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(painter.pen().color(), 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    drawOnField(painter, shape);
    painter.restore();
}

QColor qtFailureColour() {
    bool const isDark = QGuiApplication::palette().color(QPalette::Base).lightness() < 128;
    return isDark ? QColor(0xEF, 0x6B, 0x67) : QColor(0xC0, 0x27, 0x27);
}

QIcon qtIcon(QtShape shape, bool isDimmed) {
    return QIcon(qtOwned<ShapeEngine>(shape, isDimmed));
}

} // namespace Ko
