#include "image/colour.h"
#include "plugIns/plugIn.h"

#include <array>
#include <cmath>

namespace {

using namespace compositor;

// The resulting light for each value of a channel.
std::array<float, 256> makeCurve(float gain, float gamma) {
    std::array<float, 256> curve{};
    for (std::size_t value = 0; value < curve.size(); ++value)
        curve[value] = std::pow(decodeSrgb(static_cast<std::uint8_t>(value)) * gain, 1.0f / gamma);
    return curve;
}

Picture grade(Picture const& picture, Statement const& input) {
    auto const curve = makeCurve(input.number(1, 0.0f, 100.0f), input.number(2, 0.01f, 100.0f));
    float const saturation = input.arguments() == 3 ? input.number(3, 0.0f, 10.0f) : 1.0f;
    Picture result = picture;
    for (int y = 0; y < result.size().height; ++y)
        for (Colour& pixel : result.row(y)) {
            float const red = curve[pixel.red], green = curve[pixel.green], blue = curve[pixel.blue];
            float const grey = 0.2126f * red + 0.7152f * green + 0.0722f * blue;
            auto const saturated = [&](float light) { return encodeSrgb(grey + (light - grey) * saturation); };
            pixel = {saturated(red), saturated(green), saturated(blue), pixel.alpha};
        }
    return result;
}

PlugIn<struct GradeTag> package("grade", {"Grade", "a gain, a gamma and perhaps a saturation", 2, 3}, grade);

} // namespace
