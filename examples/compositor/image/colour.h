#pragma once

#include "image/picture.h"

#include <cstdint>
#include <string>

namespace compositor {

/// The linear light of an 8-bit sRGB value, from 0 to 1.
float decodeSrgb(std::uint8_t value);

/// The 8-bit sRGB value nearest to a linear light; what lies outside 0 to 1 becomes the end that it lies beyond.
std::uint8_t encodeSrgb(float light);

/// A colour in linear light, multiplied by its alpha, as which colours can be mixed.
struct Light {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;
};

Light toLight(Colour colour, float opacity = 1.0f);
/// The nearest colour; what lies beyond 1 becomes 1.
Colour toColour(Light const& light);

/// The colour that "rrggbb" or "rrggbbaa" stands for. @throws ImageError
Colour colourOf(std::string const& text);

} // namespace compositor
