#pragma once

#include "image/picture.h"

#include <cstdint>
#include <string>

namespace compositor {

/// The linear light of an 8-bit sRGB value, from 0 to 1.
[[nodiscard]] float decodeSrgb(std::uint8_t value);

/// The nearest 8-bit sRGB value of a linear light. Saturates outside 0 to 1; NaN becomes 0.
[[nodiscard]] std::uint8_t encodeSrgb(float light);

/// A colour in linear light, multiplied by its alpha, so that colours can be blended.
struct Light {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;
};

[[nodiscard]] Light toLight(Colour colour, float opacity = 1.0f);
/// The nearest colour. Saturates at 1.
[[nodiscard]] Colour toColour(Light const& light);

/// Reads "rrggbb" or "rrggbbaa". @throws ImageError
[[nodiscard]] Colour colourOf(std::string const& text);

} // namespace compositor
