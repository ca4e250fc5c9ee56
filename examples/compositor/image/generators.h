#pragma once

#include "image/picture.h"

namespace compositor {

/// Squares of `cell` pixels, at least 1, in turn of both colours, `first` at the top left. @throws ImageError
Picture makeChecker(Size size, int cell, Colour first, Colour second);

enum class Direction { Horizontal, Vertical };

/// From one colour at the left or top edge to the other at the right or bottom one, even in sRGB. @throws ImageError
Picture makeGradient(Size size, Colour from, Colour to, Direction direction);

} // namespace compositor
