#include "image/picture.h"

namespace compositor {

namespace {

constexpr int maximumSide = 65535;
constexpr std::size_t maximumPixels = std::size_t{1} << 28;

} // namespace

void checkSize(Size size) {
    bool const sidesFit =
        size.width >= 1 && size.height >= 1 && size.width <= maximumSide && size.height <= maximumSide;
    if (!sidesFit || size.pixels() > maximumPixels)
        throw ImageError("a picture of " + std::to_string(size.width) + " x " + std::to_string(size.height) +
                         " pixels is not possible; sides go from 1 to 65535, and pixels to 268435456 in all");
}

Picture::Picture(Size size) : _size((checkSize(size), size)), _pixels(size.pixels(), Colour{0, 0, 0, 0}) {}

} // namespace compositor
