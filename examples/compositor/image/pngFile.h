#pragma once

#include "image/picture.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <istream>
#include <span>

namespace compositor {

/// Whether the next bytes of a seekable stream are the signature of a PNG picture. Does not move in the stream.
[[nodiscard]] bool isPng(std::istream& stream);

/// Reads a PNG picture of any kind from the next `length` bytes of a seekable stream. Allocates no memory for a size that so
/// few bytes cannot have.
/// @throws ImageError with the reason.
[[nodiscard]] Picture readPng(std::istream& stream, std::uint64_t length);

/// Receives the next bytes of a file.
using ByteSink = std::function<void(std::span<std::byte const> bytes)>;

/// Encodes a picture as PNG. Exceptions of the sink are passed on.
void writePng(Picture const& picture, ByteSink const& sink);

/// Fills a row of the picture to write; returns false to stop.
using RowSource = std::function<bool(int y, std::span<Colour> row)>;

/// Writes a PNG file row by row. The file is replaced as a whole or not at all.
/// @returns false when the source stopped it; no file is written then.
/// @throws ImageError naming the path and the reason.
bool writePng(std::filesystem::path const& path, Size size, RowSource const& source);

} // namespace compositor
