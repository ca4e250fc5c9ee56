#include "plugIns/plugIn.h"

namespace {

using namespace compositor;

Picture invert(Picture const& picture, Statement const&) {
    Picture result = picture;
    auto const other = [](std::uint8_t value) { return static_cast<std::uint8_t>(255 - value); };
    for (int y = 0; y < result.size().height; ++y)
        for (Colour& pixel : result.row(y))
            pixel = {other(pixel.red), other(pixel.green), other(pixel.blue), pixel.alpha};
    return result;
}

PlugIn<struct InvertTag> package("invert", {"Invert", "nothing", 0, 0}, invert);

} // namespace
