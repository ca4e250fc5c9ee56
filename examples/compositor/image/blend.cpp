#include "image/render.h"

#include <algorithm>
#include <array>

namespace compositor {

namespace {

constexpr std::array<char const*, 4> modeNames{"over", "add", "multiply", "screen"};

// The blend modes: one channel of the source and of the destination, and both alphas.
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
void blendRow(std::span<Colour const> source, float opacity, Light* destination, Blend blend) {
    for (Colour const colour : source) {
        Light const above = toLight(colour, opacity);
        Light& below = *destination++;
        below = {blend(above.red, below.red, above.alpha, below.alpha),
            blend(above.green, below.green, above.alpha, below.alpha),
            blend(above.blue, below.blue, above.alpha, below.alpha),
            blend(above.alpha, below.alpha, above.alpha, below.alpha)};
    }
}

} // namespace

void blendRow(BlendMode mode, std::span<Colour const> source, float opacity, std::span<Light> below) {
    // A loop for each mode, so that the compiler can optimise each of them.
    Light* const destination = below.data();
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

std::string toString(BlendMode mode) {
    return modeNames[static_cast<std::size_t>(mode)];
}

BlendMode blendModeOf(std::string const& name) {
    auto const found = std::find(modeNames.begin(), modeNames.end(), name);
    if (found == modeNames.end())
        throw ImageError("there is no blend mode \"" + name + "\"; there are over, add, multiply and screen");
    return static_cast<BlendMode>(found - modeNames.begin());
}

} // namespace compositor
