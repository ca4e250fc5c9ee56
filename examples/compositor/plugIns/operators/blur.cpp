#include "image/colour.h"
#include "plugIns/plugIn.h"

#include <algorithm>

namespace {

using namespace compositor;

// Adds a multiple of a light.
void add(Light& sum, Light const& light, float times) {
    sum.red += times * light.red;
    sum.green += times * light.green;
    sum.blue += times * light.blue;
    sum.alpha += times * light.alpha;
}

// Replaces each pixel of a line by the mean of a window around it. The first and last pixel are repeated beyond the ends.
template <class Pixel>
void blurLine(int length, int radius, Pixel const& pixel, std::vector<Light>& line) {
    line.clear();
    for (int index = -radius; index <= length + radius; ++index)
        line.push_back(toLight(pixel(std::clamp(index, 0, length - 1))));
    auto const count = 2 * static_cast<std::size_t>(radius) + 1;
    float const share = 1.0f / static_cast<float>(count);
    Light mean;
    for (std::size_t index = 0; index < count; ++index)
        add(mean, line[index], share);
    for (int index = 0; index < length; ++index) {
        auto const first = static_cast<std::size_t>(index);
        pixel(index) = toColour(mean);
        add(mean, line[first + count], share);
        add(mean, line[first], -share);
    }
}

// Three passes approximate a Gaussian blur.
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

PlugIn<struct BlurTag> package("blur", {"Blur", "a radius in pixels", 1, 1}, blur);

} // namespace
