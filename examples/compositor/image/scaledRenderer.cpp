#include "image/scaledRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace compositor {

namespace {

// The level with the next similar size: between 0.7 and 1.4 pixels of it become one.
int levelOf(double scale) {
    return std::max(0, static_cast<int>(std::lround(std::log2(1.0 / scale))));
}

// Positions on reduced pictures have this many binary places.
constexpr int places = 32;

} // namespace

/// A row of the scaled canvas.
struct ScaledRenderer::Row {
    int x;
    int y;
    std::span<Light> below;
};

ScaledRenderer::ScaledRenderer(
    std::vector<PlacedPicture> layers, double scale, std::shared_ptr<ReducedPictures> reduced)
    : _layers(std::move(layers)), _scale(scale), _level(levelOf(scale)), _reduced(std::move(reduced)) {}

void ScaledRenderer::render(Area const& area, std::span<Colour> target) const {
    LayersBelow below;
    render(area, target, 0, below);
}

void ScaledRenderer::render(
    Area const& area, std::span<Colour> target, std::size_t numBelow, LayersBelow& below) const {
    numBelow = std::min(numBelow, _layers.size());
    std::size_t const lowest = lowestVisible(area);
    std::vector<Light> composed(target.size());
    std::size_t from = lowest;
    if (lowest < numBelow) {
        auto const same = std::span(_layers).first(numBelow);
        if (!std::ranges::equal(below.layers, same) || below.composed.size() != target.size()) {
            below.layers.assign(same.begin(), same.end());
            below.composed.assign(target.size(), Light());
            compose(lowest, numBelow, area, below.composed);
        }
        composed = below.composed;
        from = numBelow;
    }
    compose(from, _layers.size(), area, composed);
    std::ranges::transform(composed, target.begin(), toColour);
}

std::size_t ScaledRenderer::lowestVisible(Area const& area) const {
    for (std::size_t index = _layers.size(); index-- > 0;)
        if (hides(_layers[index], area)) return index;
    return 0;
}

void ScaledRenderer::compose(std::size_t from, std::size_t to, Area const& area, std::span<Light> composed) const {
    auto const width = static_cast<std::size_t>(area.width);
    std::vector<Colour> sampled(width);
    for (std::size_t index = from; index < to; ++index) {
        PlacedPicture const& layer = _layers[index];
        if (!layer.isVisible || layer.opacity <= 0.0f) continue;
        SharedPicture const reduced = _reduced->get(layer.picture, _level);
        for (int y = 0; y < area.height; ++y)
            blend(layer, *reduced, {area.x, area.y + y, composed.subspan(static_cast<std::size_t>(y) * width, width)},
                sampled);
    }
}

// Whether nothing below the layer can be seen in the area.
bool ScaledRenderer::hides(PlacedPicture const& layer, Area const& area) const {
    Size const size = layer.picture->size();
    auto const isInside = [this](int begin, int length, double from, int side) {
        return begin / _scale >= from && (begin + length) / _scale <= from + side;
    };
    return layer.isVisible && layer.blend == BlendMode::Over && layer.opacity >= 1.0f &&
           isInside(area.x, area.width, layer.x, size.width) && isInside(area.y, area.height, layer.y, size.height) &&
           _reduced->isOpaque(layer.picture);
}

void ScaledRenderer::blend(
    PlacedPicture const& layer, Picture const& reduced, Row const& row, std::vector<Colour>& sampled) const {
    Size const size = layer.picture->size();
    // The centre of a pixel of the view, on the layer.
    double const centreY = (row.y + 0.5) / _scale - layer.y;
    if (centreY < 0 || centreY >= size.height) return;
    double const left = (layer.x * _scale) - row.x - 0.5, right = left + size.width * _scale;
    auto const width = static_cast<double>(row.below.size());
    auto const begin = static_cast<std::int64_t>(std::ceil(std::clamp(left, 0.0, width)));
    auto const end = static_cast<std::int64_t>(std::ceil(std::clamp(right, 0.0, width)));
    if (begin >= end) return;

    double const unit = std::ldexp(1.0, places - _level);
    auto const step = static_cast<std::int64_t>(std::llround(unit / _scale));
    auto position = static_cast<std::int64_t>(((static_cast<double>(row.x + begin) + 0.5) / _scale - layer.x) * unit);
    auto const source = reduced.row(std::min(static_cast<int>(centreY) >> _level, reduced.size().height - 1));
    auto const below = row.below.subspan(static_cast<std::size_t>(begin));
    auto const count = static_cast<std::size_t>(end - begin);
    std::int64_t const last = reduced.size().width - 1;
    if (step == std::int64_t{1} << places && (position >> places) + static_cast<std::int64_t>(count) - 1 <= last) {
        auto const first = static_cast<std::size_t>(position >> places);
        return blendRow(layer.blend, source.subspan(first, count), layer.opacity, below);
    }
    for (std::size_t index = 0; index < count; ++index, position += step)
        sampled[index] = source[static_cast<std::size_t>(std::min(position >> places, last))];
    blendRow(layer.blend, std::span(sampled).first(count), layer.opacity, below);
}

} // namespace compositor
