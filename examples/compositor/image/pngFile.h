#pragma once

#include "image/picture.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <istream>
#include <span>

namespace compositor {

/// Whether a stream that can seek goes on with a PNG picture; stays where it is.
[[nodiscard]] bool isPng(std::istream& stream);

/// Reads a PNG picture of any kind: the next `length` bytes of a stream that can seek. Its size is compared with `length`
/// before memory is taken for it.
/// @throws ImageError with the reason.
[[nodiscard]] Picture readPng(std::istream& stream, std::uint64_t length);

/// Takes bytes in the order of the file.
using ByteSink = std::function<void(std::span<std::byte const> bytes)>;

/// Encodes a picture as PNG. What the sink throws is passed on.
void writePng(Picture const& picture, ByteSink const& sink);

/// Fills a row of the picture to write; returns false to give up.
using RowSource = std::function<bool(int y, std::span<Colour> row)>;

/// Writes a PNG picture row by row, whole or not at all.
/// @returns false when the source gave up; no file is written then.
/// @throws ImageError naming the path and the reason.
bool writePng(std::filesystem::path const& path, Size size, RowSource const& source);

} // namespace compositor
