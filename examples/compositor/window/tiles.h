#pragma once

#include "document/document.h"
#include "framework/bgTask/bgJob.h"
#include "image/scaledRenderer.h"

#include <QImage>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace compositor::window {

/// The picture of a document at one scale, in tiles that background jobs render.
///
/// Only tiles that are asked for and have changed are rendered, all of them together as one frame. Until it is complete, tiles keep the
/// picture that they had and are stale. A change during a frame begins the next one when that ends, so that a drag shows one frame
/// after the other. Application thread only; rectangles are in pixels of the scaled canvas.
class Tiles : public QObject {
    Q_OBJECT

public:
    static constexpr int side = 256;

    explicit Tiles(QObject* parent = nullptr);
    ~Tiles() override;

    /// Takes a state of the document over. Tiles that show something else than before become stale.
    /// @param scale above 0, at most 1. Another one than before makes all tiles anew; the old ones are kept to be drawn meanwhile.
    void show(Document const& document, double scale);
    /// Has the stale tiles of a rectangle rendered.
    void request(QRect const& visible);
    /// Whether everything in the rectangle is rendered as the document is.
    [[nodiscard]] bool isCurrent(QRect const& visible) const;
    [[nodiscard]] QSize size() const { return _size; }
    [[nodiscard]] double scale() const { return _scale; }

    /// A part of the picture.
    struct Part {
        QRectF place;
        QImage const* image;
        bool isStale;
    };
    /// What there is to draw in a rectangle, in the order of drawing: where tiles are missing, those of the scale before.
    [[nodiscard]] std::vector<Part> parts(QRect const& visible) const;

Q_SIGNALS:
    /// A frame has arrived, which changes this rectangle.
    void rendered(QRect const& area);

private:
    struct Tile {
        QImage image;
        std::uint64_t wanted = 1;
        std::uint64_t rendered = 0;
        // Made while one layer changes again and again.
        std::shared_ptr<LayersBelow> below = {};
    };
    using Key = std::pair<int, int>;
    struct Frame;
    class Job;

    static QRect keysOf(QRect const& area);
    QRect placeOf(Key const& key) const;
    void markStale(QRectF const& onCanvas);
    void markDifferences(Document const& before, Document const& now);
    std::vector<Key> staleKeys(QRect const& visible) const;
    void begin(std::vector<Key> const& keys);
    void jobHasEnded();
    void finish();
    void dropFarTiles();

    Document _document;
    double _scale = 0.0;
    QSize _size;
    std::map<Key, Tile> _tiles;
    // Those of the scale before, while tiles are missing.
    std::map<Key, Tile> _oldTiles;
    double _oldScale = 1.0;
    QRect _visible;
    // The lowest layers that the last change has not touched.
    std::size_t _numBelow = 0;
    std::uint64_t _revision = 1;
    // Changes with the scale and the size of the canvas.
    std::uint64_t _layout = 0;
    std::shared_ptr<ReducedPictures> _reduced = std::make_shared<ReducedPictures>();
    std::shared_ptr<Frame> _frame;
    std::vector<Ko::RCShdPtr<Ko::BgJob>> _jobs;
    std::vector<Ko::ObSubscription> _ends;
    int _running = 0;
};

} // namespace compositor::window
