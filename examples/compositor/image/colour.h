#pragma once

#include "image/picture.h"

#include <cstdint>
#include <string>

namespace compositor {

/// The linear light of an 8-bit sRGB value, from 0 to 1.
float decodeSrgb(std::uint8_t value);

/// The 8-bit sRGB value nearest to a linear light; what lies outside 0 to 1 becomes the end that it lies beyond.
std::uint8_t encodeSrgb(float light);

/// The colour that "rrggbb" or "rrggbbaa" stands for. @throws ImageError
Colour colourOf(std::string const& text);

} // namespace compositor
