#include "image/generators.h"

#include <algorithm>
#include <cmath>

namespace compositor {

namespace {

Colour mix(Colour from, Colour to, double share) {
    auto const channel = [share](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue),
        channel(from.alpha, to.alpha)};
}

} // namespace

Picture makeChecker(Size size, int cell, Colour first, Colour second) {
    if (cell < 1) throw ImageError("a checker needs cells of at least 1 pixel");
    Picture picture(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.row(y)[static_cast<std::size_t>(x)] = (x / cell + y / cell) % 2 == 0 ? first : second;
    return picture;
}

Picture makeGradient(Size size, Colour from, Colour to, Direction direction) {
    Picture picture(size);
    bool const horizontal = direction == Direction::Horizontal;
    double const steps = std::max(1, (horizontal ? size.width : size.height) - 1);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.row(y)[static_cast<std::size_t>(x)] = mix(from, to, (horizontal ? x : y) / steps);
    return picture;
}

} // namespace compositor
