#include "image/colour.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace compositor {

namespace {

double toLinear(double srgb) {
    return srgb <= 0.04045 ? srgb / 12.92 : std::pow((srgb + 0.055) / 1.055, 2.4);
}

constexpr int cells = 4096;

// For each value: `light`, and `above`, the light halfway to the next value. For each cell of light: `guess`, the value at its
// lower end.
struct Tables {
    Tables() {
        for (std::size_t value = 0; value < light.size(); ++value) {
            light[value] = static_cast<float>(toLinear(static_cast<double>(value) / 255.0));
            above[value] = static_cast<float>(toLinear((static_cast<double>(value) + 0.5) / 255.0));
        }
        above.back() = 2.0f;
        std::uint8_t value = 0;
        for (std::size_t cell = 0; cell < guess.size(); ++cell) {
            while (static_cast<float>(cell) / cells >= above[value])
                ++value;
            guess[cell] = value;
        }
    }

    std::array<float, 256> light{};
    std::array<float, 256> above{};
    std::array<std::uint8_t, cells + 1> guess{};
};

Tables const tables;

} // namespace

float decodeSrgb(std::uint8_t value) {
    return tables.light[value];
}

std::uint8_t encodeSrgb(float light) {
    if (!(light > 0.0f)) return 0;
    if (light >= 1.0f) return 255;
    std::uint8_t value = tables.guess[static_cast<std::size_t>(light * cells)];
    while (light >= tables.above[value])
        ++value;
    return value;
}

Light toLight(Colour colour, float opacity) {
    float const alpha = static_cast<float>(colour.alpha) / 255.0f * opacity;
    return {decodeSrgb(colour.red) * alpha, decodeSrgb(colour.green) * alpha, decodeSrgb(colour.blue) * alpha, alpha};
}

Colour toColour(Light const& light) {
    if (light.alpha <= 0.0f) return {0, 0, 0, 0};
    if (light.alpha >= 1.0f) return {encodeSrgb(light.red), encodeSrgb(light.green), encodeSrgb(light.blue), 255};
    float const factor = 1.0f / light.alpha;
    constexpr float half = 0.5f; // the sum is positive, so that the cast rounds
    auto const encoded = [factor](float channel) { return encodeSrgb(channel * factor); };
    return {encoded(light.red), encoded(light.green), encoded(light.blue),
        static_cast<std::uint8_t>(light.alpha * 255.0f + half)};
}

Colour colourOf(std::string const& text) {
    std::uint32_t value = 0;
    char const* const end = text.data() + text.size();
    bool const isHexadecimal =
        (text.size() == 6 || text.size() == 8) && std::from_chars(text.data(), end, value, 16).ptr == end;
    if (!isHexadecimal) throw ImageError("\"" + text + "\" is not a colour; write rrggbb or rrggbbaa");
    if (text.size() == 6) value = value << 8 | 0xFF;
    auto const byte = [value](int shift) { return static_cast<std::uint8_t>(value >> shift & 0xFF); };
    return {byte(24), byte(16), byte(8), byte(0)};
}

} // namespace compositor
