#include "image/colour.h"
#include "plugIns/plugIn.h"

namespace {

using namespace compositor;

// Squares of alternating colours. The first colour is at the top left.
Picture makeChecker(Size size, Statement const& input) {
    int const cell = input.integer(1, 1, 65535);
    Colour const colours[] = {colourOf(input.words[2]), colourOf(input.words[3])};
    Picture picture(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.row(y)[static_cast<std::size_t>(x)] = colours[(x / cell + y / cell) % 2];
    return picture;
}

PlugIn<struct CheckerTag> package("checker", {"Add Checker", "a cell and two colours", 3, 3}, makeChecker);

} // namespace
