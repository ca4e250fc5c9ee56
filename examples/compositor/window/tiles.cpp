#include "window/tiles.h"

#include "framework/bgTask/bgManager.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace compositor::window {

namespace {

constexpr unsigned highPriority = 1;
// The workers for jobs of high priority.
constexpr std::size_t mostJobs = 2;
// Some screens full.
constexpr std::size_t mostTiles = 1024;

QRectF frameOf(PlacedPicture const& placed) {
    Size const size = placed.picture->size();
    return QRectF(placed.x, placed.y, size.width, size.height);
}

// In the format that is drawn fastest.
QImage toImage(std::vector<Colour> const& pixels, QSize size) {
    bool const isOpaque = std::ranges::all_of(pixels, [](Colour colour) { return colour.alpha == 255; });
    return QImage(reinterpret_cast<uchar const*>(pixels.data()), size.width(), size.height(),
        qsizetype{4} * size.width(), isOpaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888)
        .convertToFormat(isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
}

bool looksAlike(Layer const& a, Layer const& b) {
    return a.placed == b.placed;
}

} // namespace

/// Tiles that are rendered together.
struct Tiles::Frame {
    ScaledRenderer renderer;
    std::uint64_t revision;
    std::uint64_t layout;
    std::vector<Key> keys;
    std::vector<QRect> places;
    std::size_t numBelow;
    std::vector<std::shared_ptr<LayersBelow>> below;
    std::vector<QImage> images;
    std::atomic<std::size_t> next{0};
};

/// Renders tiles of a frame until there are no more. Each worker has one.
class Tiles::Job final : public Ko::BgJobProtocol {
public:
    explicit Job(std::shared_ptr<Frame> frame) : BgJobProtocol("draw the canvas", "draw"), _frame(std::move(frame)) {}

    void execute() override {
        std::vector<Colour> pixels;
        while (continueExecution()) {
            std::size_t const index = _frame->next++;
            if (index >= _frame->places.size()) break;
            QRect const place = _frame->places[index];
            pixels.resize(static_cast<std::size_t>(place.width()) * static_cast<std::size_t>(place.height()));
            _frame->renderer.render(
                {place.x(), place.y(), place.width(), place.height()}, pixels, _frame->numBelow, *_frame->below[index]);
            _frame->images[index] = toImage(pixels, place.size());
        }
        reportProgress(1, 1);
    }

private:
    std::shared_ptr<Frame> _frame;
};

Tiles::Tiles(QObject* parent) : QObject(parent) {}

Tiles::~Tiles() {
    _ends.clear();
    for (auto const& job : _jobs)
        Ko::BgManager::getInstance().stopAndDeleteJob(job);
}

void Tiles::show(Document const& document, double scale) {
    Document const before = std::exchange(_document, document);
    bool const isAnew = scale != _scale || before.canvas() != document.canvas();
    if (!isAnew) return markDifferences(before, document);
    // Tiles that never arrived would be drawn as holes.
    bool const hasTiles = std::ranges::any_of(_tiles, [](auto const& tile) { return !tile.second.image.isNull(); });
    if (hasTiles && before.canvas() == document.canvas()) {
        _oldTiles = std::move(_tiles);
        _oldScale = _scale;
    }
    _tiles.clear();
    ++_revision;
    ++_layout;
    _numBelow = 0;
    _scale = scale;
    _size = {std::max(1, static_cast<int>(std::lround(document.canvas().width * scale))),
        std::max(1, static_cast<int>(std::lround(document.canvas().height * scale)))};
}

// Layers of both are compared in the order of the later document: where their order differs, all that moved is stale.
void Tiles::markDifferences(Document const& before, Document const& now) {
    std::vector<Layer> const& old = before.layers();
    ++_revision;
    auto const first = std::ranges::mismatch(old, now.layers(), looksAlike);
    if (first.in1 != old.end() || first.in2 != now.layers().end())
        _numBelow = static_cast<std::size_t>(first.in2 - now.layers().begin());
    for (Layer const& layer : old)
        if (!now.contains(layer.id)) markStale(frameOf(layer.placed));
    std::size_t lastIndex = 0;
    for (Layer const& layer : now.layers()) {
        if (!before.contains(layer.id)) {
            markStale(frameOf(layer.placed));
            continue;
        }
        std::size_t const index = before.indexOf(layer.id);
        bool const isInOrder = index >= lastIndex;
        lastIndex = std::max(lastIndex, index);
        if (isInOrder && looksAlike(old[index], layer)) continue;
        markStale(frameOf(old[index].placed));
        markStale(frameOf(layer.placed));
    }
}

QRect Tiles::keysOf(QRect const& area) {
    if (area.isEmpty()) return {};
    return {QPoint(area.left() / side, area.top() / side), QPoint(area.right() / side, area.bottom() / side)};
}

QRect Tiles::placeOf(Key const& key) const {
    return QRect(key.first * side, key.second * side, side, side) & QRect(QPoint(0, 0), _size);
}

void Tiles::markStale(QRectF const& onCanvas) {
    QRectF const scaled(onCanvas.topLeft() * _scale, onCanvas.size() * _scale);
    for (auto& [key, tile] : _tiles)
        if (scaled.adjusted(-1, -1, 1, 1).intersects(QRectF(placeOf(key)))) tile.wanted = _revision;
}

std::vector<Tiles::Key> Tiles::staleKeys(QRect const& visible) const {
    std::vector<Key> keys;
    QRect const range = keysOf(visible & QRect(QPoint(0, 0), _size));
    for (int y = range.top(); y <= range.bottom(); ++y)
        for (int x = range.left(); x <= range.right(); ++x) {
            auto const found = _tiles.find({x, y});
            if (found == _tiles.end() || found->second.rendered < found->second.wanted) keys.emplace_back(x, y);
        }
    return keys;
}

bool Tiles::isCurrent(QRect const& visible) const {
    return staleKeys(visible).empty();
}

void Tiles::request(QRect const& visible) {
    _visible = visible;
    if (_frame) return;
    std::vector<Key> const keys = staleKeys(visible);
    if (!keys.empty()) begin(keys);
}

void Tiles::begin(std::vector<Key> const& keys) {
    std::vector<PlacedPicture> layers;
    for (Layer const& layer : _document.layers())
        layers.push_back(layer.placed);
    _frame = std::make_shared<Frame>(ScaledRenderer(std::move(layers), _scale, _reduced), _revision, _layout, keys);
    _frame->numBelow = _numBelow;
    for (Key const& key : keys) {
        _frame->places.push_back(placeOf(key));
        Tile& tile = _tiles.try_emplace(key, Tile{{}, _revision, 0}).first->second;
        if (!tile.below || _numBelow == 0) tile.below = std::make_shared<LayersBelow>();
        _frame->below.push_back(tile.below);
    }
    _frame->images.resize(keys.size());
    std::size_t const count = std::min(mostJobs, keys.size());
    _running = static_cast<int>(count);
    for (std::size_t number = 0; number < count; ++number) {
        _jobs.push_back(Ko::BgJob::create(std::make_unique<Job>(_frame)));
        _ends.push_back(_jobs.back()->onEnd([this](Ko::BgJob&) { jobHasEnded(); }));
    }
    for (auto const& job : _jobs)
        Ko::BgManager::getInstance().addUiJob(job, highPriority);
}

void Tiles::jobHasEnded() {
    if (--_running == 0) QMetaObject::invokeMethod(this, &Tiles::finish, Qt::QueuedConnection);
}

// Tiles of a job that was stopped have no image and stay stale; they are asked for when they are drawn the next time.
void Tiles::finish() {
    _ends.clear();
    for (auto const& job : std::exchange(_jobs, {}))
        Ko::BgManager::getInstance().stopAndDeleteJob(job);
    auto const frame = std::exchange(_frame, nullptr);
    QRect changed;
    for (std::size_t index = 0; index < frame->keys.size(); ++index) {
        auto const found = _tiles.find(frame->keys[index]);
        bool const isUsed = found != _tiles.end() && !frame->images[index].isNull() && frame->layout == _layout;
        if (!isUsed) continue;
        found->second.image = std::move(frame->images[index]);
        found->second.rendered = frame->revision;
        changed |= frame->places[index];
    }
    dropFarTiles();
    if (isCurrent(_visible)) _oldTiles.clear();
    request(_visible);
    Q_EMIT rendered(changed);
}

void Tiles::dropFarTiles() {
    if (_tiles.size() <= mostTiles) return;
    std::erase_if(_tiles, [this](auto const& tile) { return !placeOf(tile.first).intersects(_visible); });
}

std::vector<Tiles::Part> Tiles::parts(QRect const& visible) const {
    std::vector<Part> parts;
    double const ratio = _scale / _oldScale;
    for (auto const& [key, tile] : _oldTiles)
        if (!tile.image.isNull())
            parts.push_back({QRectF(key.first * side * ratio, key.second * side * ratio, tile.image.width() * ratio,
                                 tile.image.height() * ratio),
                &tile.image, true});
    QRect const range = keysOf(visible & QRect(QPoint(0, 0), _size));
    for (int y = range.top(); y <= range.bottom(); ++y)
        for (int x = range.left(); x <= range.right(); ++x) {
            auto const found = _tiles.find({x, y});
            if (found == _tiles.end() || found->second.image.isNull()) continue;
            Tile const& tile = found->second;
            parts.push_back({QRectF(placeOf(found->first)), &tile.image, tile.rendered < tile.wanted});
        }
    return parts;
}

} // namespace compositor::window
