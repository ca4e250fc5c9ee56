#pragma once

#include "image/inputFile.h"
#include "image/pngFile.h"
#include "tests/fuzz/pngChecksums.h"

#include <sstream>

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

inline std::string encode(compositor::Picture const& picture) {
    std::string bytes;
    compositor::writePng(picture, [&bytes](std::span<std::byte const> piece) {
        bytes.append(reinterpret_cast<char const*>(piece.data()), piece.size());
    });
    return bytes;
}

inline compositor::Picture decode(std::string const& bytes) {
    std::istringstream stream(bytes);
    return compositor::readPng(stream, bytes.size());
}

/// A small file that claims to be 65535 x 4000 pixels.
inline std::string hugePicture() {
    std::string bytes = encode(compositor::Picture(compositor::Size{1, 1}));
    constexpr char size[] = {0, 0, '\xFF', '\xFF', 0, 0, '\x0F', '\xA0'};
    bytes.replace(16, sizeof size, size, sizeof size);
    std::span const content(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size());
    KoFuzz::repairChecksums(content);
    return bytes;
}

inline compositor::Picture readPicture(std::filesystem::path const& path) {
    compositor::InputFile file(path);
    return compositor::readPng(file.stream, file.length);
}

} // namespace KoTest
