#pragma once

#include "image/picture.h"

#include <stdexcept>

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

/// What the call says when it fails.
template <class Call>
std::string errorOf(Call call) {
    try {
        call();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "nothing was thrown";
}

} // namespace KoTest
