#include "image/render.h"

#include "image/pngFile.h"

#include <algorithm>
#include <cstdint>

namespace compositor {

namespace {

/// One row of tiles, over the whole width of the canvas. Rendered when its first row of pixels is read.
class Band {
public:
    Band(Renderer const& renderer, Size canvas, Progress const& progress)
        : _renderer(renderer), _canvas(canvas), _progress(progress) {}

    /// Copies a row of pixels. Rows must be read from top to bottom. @returns false when the rendering was stopped.
    bool read(int y, std::span<Colour> row) {
        int const inBand = y % tileSize;
        if (inBand == 0 && !render(y)) return false;
        std::ranges::copy(rowOf(inBand), row.begin());
        return true;
    }

private:
    static constexpr int tileSize = 64;

    static int countTiles(int length) { return (length + tileSize - 1) / tileSize; }

    std::span<Colour> rowOf(int y) {
        auto const width = static_cast<std::size_t>(_canvas.width);
        return std::span(_pixels).subspan(static_cast<std::size_t>(y) * width, width);
    }
    bool render(int y) {
        _pixels.resize(static_cast<std::size_t>(_canvas.width) * tileSize);
        int const tiles = countTiles(_canvas.width);
        for (int tile = 0; tile < tiles; ++tile) {
            renderTile(tile * tileSize, y);
            int const done = y / tileSize * tiles + tile + 1;
            if (_progress && !_progress(done, tiles * countTiles(_canvas.height))) return false;
        }
        return true;
    }
    void renderTile(int x, int y) {
        auto const width = static_cast<std::size_t>(std::min(tileSize, _canvas.width - x));
        for (int row = 0; row < std::min(tileSize, _canvas.height - y); ++row)
            _renderer.renderRow(x, y + row, rowOf(row).subspan(static_cast<std::size_t>(x), width));
    }

    Renderer const& _renderer;
    Size _canvas;
    Progress const& _progress;
    std::vector<Colour> _pixels;
};

} // namespace

Renderer::Renderer(Size canvas, std::vector<PlacedPicture> layers) : _canvas(canvas), _layers(std::move(layers)) {
    checkSize(canvas);
}

void Renderer::renderRow(int x, int y, std::span<Colour> pixels) const {
    std::vector<Light> composed(pixels.size());
    for (PlacedPicture const& layer : _layers) {
        if (!layer.isVisible) continue;
        // In 64 bits, since a layer may have any position.
        std::int64_t const sourceY = std::int64_t{y} - layer.y;
        std::int64_t const layerX = std::int64_t{layer.x} - x;
        Size const size = layer.picture->size();
        std::int64_t const begin = std::max<std::int64_t>(0, layerX);
        std::int64_t const end = std::min(static_cast<std::int64_t>(pixels.size()), layerX + size.width);
        if (sourceY < 0 || sourceY >= size.height || begin >= end) continue;
        auto const source =
            layer.picture->row(static_cast<int>(sourceY))
                .subspan(static_cast<std::size_t>(begin - layerX), static_cast<std::size_t>(end - begin));
        blendRow(layer.blend, source, layer.opacity, std::span(composed).subspan(static_cast<std::size_t>(begin)));
    }
    std::ranges::transform(composed, pixels.begin(), toColour);
}

bool Renderer::renderToFile(std::filesystem::path const& path, Progress const& progress) const {
    Band band(*this, _canvas, progress);
    return writePng(path, _canvas, [&band](int y, std::span<Colour> row) { return band.read(y, row); });
}

std::optional<Picture> Renderer::renderToPicture(Progress const& progress) const {
    Picture picture(_canvas);
    Band band(*this, _canvas, progress);
    for (int y = 0; y < _canvas.height; ++y)
        if (!band.read(y, picture.row(y))) return std::nullopt;
    return picture;
}

} // namespace compositor
