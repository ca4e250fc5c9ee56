#include "image/colour.h"
#include "plugIns/plugIn.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace compositor;

Colour mix(Colour from, Colour to, double share) {
    auto const channel = [share](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue),
        channel(from.alpha, to.alpha)};
}

bool isVertical(Statement const& input) {
    if (input.arguments() < 3 || input.words[3] == "horizontal") return false;
    if (input.words[3] == "vertical") return true;
    throw InputError("\"" + input.words[3] + "\" is not a direction; write horizontal or vertical");
}

// From one colour at the left or top edge to another at the right or bottom edge; linear in sRGB.
Picture makeGradient(Size size, Statement const& input) {
    Colour const from = colourOf(input.words[1]), to = colourOf(input.words[2]);
    bool const vertical = isVertical(input);
    double const steps = std::max(1, (vertical ? size.height : size.width) - 1);
    Picture picture(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.row(y)[static_cast<std::size_t>(x)] = mix(from, to, (vertical ? y : x) / steps);
    return picture;
}

PlugIn<struct GradientTag> package(
    "gradient", {"Add Gradient", "two colours and perhaps a direction", 2, 3}, makeGradient);

} // namespace
