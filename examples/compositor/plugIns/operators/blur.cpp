#include "image/colour.h"
#include "plugIns/plugIn.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace compositor;

/// Premultiplied light, as which pixels can be mixed.
struct Light {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 0;

    Light& operator+=(Light const& other) { return add(other, 1); }
    Light& operator-=(Light const& other) { return add(other, -1); }

private:
    Light& add(Light const& other, float factor) {
        red += factor * other.red;
        green += factor * other.green;
        blue += factor * other.blue;
        alpha += factor * other.alpha;
        return *this;
    }
};

Light toLight(Colour pixel) {
    float const alpha = static_cast<float>(pixel.alpha) / 255;
    return {decodeSrgb(pixel.red) * alpha, decodeSrgb(pixel.green) * alpha, decodeSrgb(pixel.blue) * alpha, alpha};
}

Colour toColour(Light const& sum, float count) {
    float const alpha = std::clamp(sum.alpha / count, 0.0f, 1.0f);
    if (alpha == 0.0f) return {0, 0, 0, 0};
    auto const channel = [&](float light) { return encodeSrgb(light / count / alpha); };
    return {
        channel(sum.red), channel(sum.green), channel(sum.blue), static_cast<std::uint8_t>(std::lround(alpha * 255))};
}

// The mean over a window of pixels, along a line; the outermost ones are repeated beyond its ends.
template <class Pixel>
void blurLine(int length, int radius, Pixel const& pixel, std::vector<Light>& line) {
    line.clear();
    for (int index = -radius; index <= length + radius; ++index)
        line.push_back(toLight(pixel(std::clamp(index, 0, length - 1))));
    auto const count = static_cast<std::size_t>(2 * radius + 1);
    Light sum;
    for (std::size_t index = 0; index < count; ++index)
        sum += line[index];
    for (int index = 0; index < length; ++index) {
        auto const first = static_cast<std::size_t>(index);
        pixel(index) = toColour(sum, static_cast<float>(count));
        sum += line[first + count];
        sum -= line[first];
    }
}

// Three passes come close to a Gaussian curve.
Picture blur(Picture const& picture, Statement const& input) {
    int const radius = input.integer(1, 0, 1000);
    Picture result = picture;
    std::vector<Light> line;
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < result.size().height; ++y)
            blurLine(
                result.size().width, radius,
                [row = result.row(y)](int x) -> Colour& { return row[static_cast<std::size_t>(x)]; }, line);
        for (int x = 0; x < result.size().width; ++x)
            blurLine(
                result.size().height, radius,
                [&](int y) -> Colour& { return result.row(y)[static_cast<std::size_t>(x)]; }, line);
    }
    return result;
}

struct BlurTag {};
PlugIn<BlurTag> const package("blur", {"Blur", "a radius in pixels", 1, 1}, blur);

} // namespace
