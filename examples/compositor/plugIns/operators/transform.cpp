#include "plugIns/plugIn.h"

#include <cmath>

namespace {

using namespace compositor;

// Makes a picture of another size. `source` returns the place of a pixel in the old picture.
template <class Source>
Picture remap(Picture const& picture, Size size, Source source) {
    Picture result(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            auto const [fromX, fromY] = source(x, y);
            result.row(y)[static_cast<std::size_t>(x)] = picture.row(fromY)[static_cast<std::size_t>(fromX)];
        }
    return result;
}

Picture scale(Picture const& picture, float factor) {
    auto const [width, height] = picture.size();
    auto const scaled = [factor](int side) {
        return static_cast<int>(std::max(1.0, std::min(std::round(double(side) * double(factor)), 1e6)));
    };
    Size const size{scaled(width), scaled(height)};
    checkSize(size);
    // The pixel whose centre is nearest.
    auto const nearest = [](int place, int to, int from) {
        return static_cast<int>((2LL * place + 1) * from / (2LL * to));
    };
    return remap(picture, size, [&, w = width, h = height](int x, int y) {
        return std::pair(nearest(x, size.width, w), nearest(y, size.height, h));
    });
}

Picture transform(Picture const& picture, Statement const& input) {
    Size const size = picture.size();
    Size const turned{size.height, size.width};
    int const right = size.width - 1, bottom = size.height - 1;
    std::string const& how = input.words[1];
    if (how == "scale" && input.arguments() == 2) return scale(picture, input.number(2, 0.001f, 1000.0f));
    if (input.arguments() == 1) {
        if (how == "mirror") return remap(picture, size, [&](int x, int y) { return std::pair(right - x, y); });
        if (how == "flip") return remap(picture, size, [&](int x, int y) { return std::pair(x, bottom - y); });
        if (how == "turn") return remap(picture, size, [&](int x, int y) { return std::pair(right - x, bottom - y); });
        if (how == "left") return remap(picture, turned, [&](int x, int y) { return std::pair(right - y, x); });
        if (how == "right") return remap(picture, turned, [&](int x, int y) { return std::pair(y, bottom - x); });
    }
    throw InputError("write mirror, flip, turn, left, right or scale and a factor, not \"" + how + "\"");
}

PlugIn<struct TransformTag> package(
    "transform", {"Transform", "mirror, flip, turn, left, right or scale and a factor", 1, 2}, transform);

} // namespace
