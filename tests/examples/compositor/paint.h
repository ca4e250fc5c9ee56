#pragma once

#include "image/picture.h"

namespace KoTest {

/// @param colourAt gives the colour at (x, y).
template <class ColourAt>
compositor::Picture paint(compositor::Size size, ColourAt const& colourAt) {
    compositor::Picture picture(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.row(y)[static_cast<std::size_t>(x)] = colourAt(x, y);
    return picture;
}

} // namespace KoTest
