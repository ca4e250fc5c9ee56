#pragma once

#include "document/document.h"

#include <cstdint>
#include <filesystem>
#include <istream>

namespace compositor {

/// A document is one file: a few lines of text, and after them the pictures as PNG, each once however many layers share
/// it.
///
///     compositor document 1
///     canvas 640 480
///     picture 1234              bytes of the first picture, number 0; zeros may come first
///     layer 0 16 -8 0.5 multiply The name, up to the end of the line
///     data
///
/// Saving is whole or not at all, and needs little memory besides the document.
/// @returns false when it was stopped. @throws ImageError naming the path and the reason.
bool saveDocument(Document const& document, std::filesystem::path const& path, Progress const& progress = {});

/// Reads a document: the next `length` bytes of a stream that can seek. Takes time and memory in proportion to them.
/// @throws DocumentError with the line or the picture that is wrong.
[[nodiscard]] Document readDocument(std::istream& stream, std::uint64_t length);

} // namespace compositor
