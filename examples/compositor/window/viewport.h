#pragma once

#include <QPointF>
#include <QRect>
#include <QSize>
#include <algorithm>

namespace compositor::window {

/// What a scroll bar shows of a view in one direction, in pixels of the device.
struct ScrollRange {
    int least;
    int most;
    int page;
    int value;
};

/// Where the canvas lies on the screen: its size and its place, in pixels of the device. Widgets have pixels of their own, of which one
/// is several of the device on displays with a high density.
struct Viewport {
    static constexpr double smallestZoom = 1.0 / 64;
    static constexpr double largestZoom = 64.0;
    /// The factor of one step of the wheel or of a menu.
    static constexpr double zoomStep = 1.25;

    /// Pixels of the device for one of the canvas.
    double zoom = 1.0;
    /// The corner of the canvas.
    QPointF origin;

    /// The scale at which the canvas is rendered: never larger than it is.
    [[nodiscard]] double scale() const { return std::min(1.0, zoom); }
    [[nodiscard]] QPointF toCanvas(QPointF device) const { return (device - origin) / zoom; }
    [[nodiscard]] QPointF fromCanvas(QPointF canvas) const { return canvas * zoom + origin; }
    /// Zooms about a point, which stays where it is.
    void zoomBy(double factor, QPointF about) {
        QPointF const fixed = toCanvas(about);
        zoom = std::clamp(zoom * factor, smallestZoom, largestZoom);
        origin = (about - fixed * zoom).toPoint();
    }
    /// Shows all of a canvas, but not larger than it is.
    void fit(QSize canvas, QSize view, int margin) {
        double const across = double(std::max(1, view.width() - 2 * margin)) / canvas.width();
        double const down = double(std::max(1, view.height() - 2 * margin)) / canvas.height();
        zoom = std::clamp(std::min({across, down, 1.0}), smallestZoom, largestZoom);
        center(canvas, view);
    }
    void center(QSize canvas, QSize view) {
        origin =
            QPointF((view.width() - canvas.width() * zoom) / 2, (view.height() - canvas.height() * zoom) / 2).toPoint();
    }
    /// How far a view can be scrolled. All of the canvas and a margin can be shown; nothing is left to scroll where all is visible.
    [[nodiscard]] ScrollRange range(Qt::Orientation direction, QSize canvas, QSize view, int margin) const {
        bool const isAcross = direction == Qt::Horizontal;
        int const page = isAcross ? view.width() : view.height();
        int const begin = static_cast<int>(isAcross ? origin.x() : origin.y());
        int const length = static_cast<int>((isAcross ? canvas.width() : canvas.height()) * zoom);
        if (begin >= 0 && begin + length <= page) return {-begin, -begin, page, -begin};
        auto const [least, most] = std::minmax({-margin, length + margin - page}); // copies
        return {std::min(least, -begin), std::max(most, -begin), page, -begin};
    }
    /// The visible part of the scaled canvas.
    [[nodiscard]] QRect visible(QSize view) const {
        double const ratio = zoom / scale();
        return QRectF(-origin / ratio, QSizeF(view) / ratio).toAlignedRect();
    }
};

} // namespace compositor::window
