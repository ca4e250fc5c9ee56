#pragma once

#include "image/picture.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace compositor {

/// The bytes of a whole file. @throws ImageError naming the path and the reason.
std::vector<std::byte> readFile(std::filesystem::path const& path);

/// Whether the bytes begin like a PNG picture.
bool isPng(std::span<std::byte const> bytes);

/// Reads a PNG picture of any kind. @throws ImageError with the reason; nothing is allocated for sizes out of bounds.
Picture decodePng(std::span<std::byte const> bytes);

/// Fills a row of the picture to write; returns false to give up.
using RowSource = std::function<bool(int y, std::span<Colour> row)>;

/// Writes a PNG picture row by row, whole or not at all.
/// @returns false when the source gave up; no file is written then.
/// @throws ImageError naming the path and the reason.
bool writePng(std::filesystem::path const& path, Size size, RowSource const& source);

std::vector<std::byte> encodePng(Picture const& picture);

} // namespace compositor
