#include "plugIns/plugIn.h"

#include <random>

namespace {

using namespace compositor;

// Uniformly distributed grey values. The language defines the numbers of this generator, so that a seed makes the same picture
// everywhere.
Picture makeNoise(Size size, Statement const& input) {
    std::mt19937 random(static_cast<std::uint32_t>(input.integer(1, 0, 2147483647)));
    Picture picture(size);
    for (int y = 0; y < size.height; ++y)
        for (Colour& pixel : picture.row(y)) {
            auto const grey = static_cast<std::uint8_t>(random() >> 24);
            pixel = {grey, grey, grey, 255};
        }
    return picture;
}

PlugIn<struct NoiseTag> package("noise", {"Add Noise", "a seed", 1, 1}, makeNoise);

} // namespace
