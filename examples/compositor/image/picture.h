#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace compositor {

/// A fault of a picture or its file. The message is for users.
class ImageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One 8-bit sRGB colour with straight alpha.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
    bool operator==(Colour const&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(Size const&) const = default;

    [[nodiscard]] std::size_t pixels() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
};

/// @throws ImageError unless both sides are from 1 to 65535 and there are at most 2^28 pixels.
void checkSize(Size size);

/// 8-bit sRGB pixels with straight alpha, in rows from top to bottom. A shared picture never changes.
class Picture {
public:
    /// Transparent black. @throws ImageError as `checkSize`.
    explicit Picture(Size size);

    [[nodiscard]] Size size() const { return _size; }
    [[nodiscard]] std::span<Colour> row(int y) { return {&_pixels[offset(y)], static_cast<std::size_t>(_size.width)}; }
    [[nodiscard]] std::span<Colour const> row(int y) const {
        return {&_pixels[offset(y)], static_cast<std::size_t>(_size.width)};
    }
    bool operator==(Picture const&) const = default;

private:
    std::size_t offset(int y) const { return static_cast<std::size_t>(y) * static_cast<std::size_t>(_size.width); }

    Size _size;
    std::vector<Colour> _pixels;
};

using SharedPicture = std::shared_ptr<Picture const>;

} // namespace compositor
