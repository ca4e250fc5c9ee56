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
    : _layers(std::move(layers)), _scale(scale), _level(levelOf(scale)), _reduced(std::move(reduced)) {
    std::erase_if(_layers, [](PlacedPicture const& layer) { return !layer.isVisible || layer.opacity <= 0.0f; });
}

void ScaledRenderer::render(Area const& area, std::span<Colour> target) const {
    auto const hiding =
        std::find_if(_layers.rbegin(), _layers.rend(), [&](PlacedPicture const& layer) { return hides(layer, area); });
    auto const lowest = hiding == _layers.rend() ? _layers.begin() : hiding.base() - 1;
    std::vector<SharedPicture> pictures;
    std::transform(lowest, _layers.end(), std::back_inserter(pictures),
        [this](PlacedPicture const& layer) { return _reduced->get(layer.picture, _level); });

    auto const width = static_cast<std::size_t>(area.width);
    std::vector<Light> composed(width);
    std::vector<Colour> sampled(width);
    for (int y = 0; y < area.height; ++y) {
        std::ranges::fill(composed, Light());
        for (std::size_t index = 0; index < pictures.size(); ++index)
            blend(
                lowest[static_cast<std::ptrdiff_t>(index)], *pictures[index], {area.x, area.y + y, composed}, sampled);
        std::ranges::transform(composed, target.subspan(static_cast<std::size_t>(y) * width, width).begin(), toColour);
    }
}

// Whether nothing below the layer can be seen in the area.
bool ScaledRenderer::hides(PlacedPicture const& layer, Area const& area) const {
    Size const size = layer.picture->size();
    auto const isInside = [this](int begin, int length, double from, int side) {
        return begin / _scale >= from && (begin + length) / _scale <= from + side;
    };
    return layer.blend == BlendMode::Over && layer.opacity >= 1.0f &&
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
