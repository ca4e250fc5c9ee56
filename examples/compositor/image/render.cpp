#include "image/render.h"

#include "image/colour.h"
#include "image/pngFile.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace compositor {

namespace {

constexpr std::array<char const*, 4> modeNames{"over", "add", "multiply", "screen"};

// Linear light, multiplied by alpha.
struct Pixel {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;
};

Pixel premultiplied(Colour colour, float opacity) {
    float const alpha = static_cast<float>(colour.alpha) / 255.0f * opacity;
    return {decodeSrgb(colour.red) * alpha, decodeSrgb(colour.green) * alpha, decodeSrgb(colour.blue) * alpha, alpha};
}

Colour straight(Pixel pixel) {
    if (pixel.alpha <= 0.0f) return {0, 0, 0, 0};
    auto const encoded = [alpha = pixel.alpha](float channel) { return encodeSrgb(channel / alpha); };
    return {encoded(pixel.red), encoded(pixel.green), encoded(pixel.blue),
        static_cast<std::uint8_t>(std::lround(std::min(pixel.alpha, 1.0f) * 255.0f))};
}

// The source over the destination: one channel each, and both alphas.
float over(float source, float destination, float sourceAlpha, float) {
    return source + destination * (1.0f - sourceAlpha);
}
float add(float source, float destination, float, float) {
    return std::min(1.0f, source + destination);
}
float multiply(float source, float destination, float sourceAlpha, float destinationAlpha) {
    return source * destination + source * (1.0f - destinationAlpha) + destination * (1.0f - sourceAlpha);
}
float screen(float source, float destination, float, float) {
    return source + destination - source * destination;
}

template <class Blend>
void blendRow(std::span<Colour const> source, float opacity, Pixel* destination, Blend blend) {
    for (Colour const colour : source) {
        Pixel const above = premultiplied(colour, opacity);
        Pixel& below = *destination++;
        below = {blend(above.red, below.red, above.alpha, below.alpha),
            blend(above.green, below.green, above.alpha, below.alpha),
            blend(above.blue, below.blue, above.alpha, below.alpha),
            blend(above.alpha, below.alpha, above.alpha, below.alpha)};
    }
}

void blendRow(BlendMode mode, std::span<Colour const> source, float opacity, Pixel* destination) {
    // Each mode's loop is compiled for itself.
    switch (mode) {
    case BlendMode::Over:
        return blendRow(source, opacity, destination, [](auto... values) { return over(values...); });
    case BlendMode::Add:
        return blendRow(source, opacity, destination, [](auto... values) { return add(values...); });
    case BlendMode::Multiply:
        return blendRow(source, opacity, destination, [](auto... values) { return multiply(values...); });
    case BlendMode::Screen:
        return blendRow(source, opacity, destination, [](auto... values) { return screen(values...); });
    }
}

} // namespace

std::string toString(BlendMode mode) {
    return modeNames[static_cast<std::size_t>(mode)];
}

BlendMode blendModeOf(std::string const& name) {
    auto const found = std::find(modeNames.begin(), modeNames.end(), name);
    if (found == modeNames.end())
        throw ImageError("there is no blend mode \"" + name + "\"; there are over, add, multiply and screen");
    return static_cast<BlendMode>(found - modeNames.begin());
}

Renderer::Renderer(Size canvas, std::vector<PlacedPicture> layers) : _canvas(canvas), _layers(std::move(layers)) {
    checkSize(canvas);
}

void Renderer::renderRow(int y, std::span<Colour> row) const {
    std::vector<Pixel> pixels(row.size());
    for (PlacedPicture const& layer : _layers) {
        // In 64 bits: a layer may lie anywhere.
        std::int64_t const sourceY = std::int64_t{y} - layer.y;
        Size const size = layer.picture->size();
        std::int64_t const begin = std::max<std::int64_t>(0, layer.x);
        std::int64_t const end = std::min<std::int64_t>(_canvas.width, std::int64_t{layer.x} + size.width);
        if (sourceY < 0 || sourceY >= size.height || begin >= end) continue;
        auto const source =
            layer.picture->row(static_cast<int>(sourceY))
                .subspan(static_cast<std::size_t>(begin - layer.x), static_cast<std::size_t>(end - begin));
        blendRow(layer.blend, source, layer.opacity, &pixels[static_cast<std::size_t>(begin)]);
    }
    std::ranges::transform(pixels, row.begin(), straight);
}

bool Renderer::renderToFile(std::filesystem::path const& path, Progress const& progress) const {
    return writePng(path, _canvas, [&](int y, std::span<Colour> row) {
        renderRow(y, row);
        return !progress || progress(y + 1, _canvas.height);
    });
}

} // namespace compositor
