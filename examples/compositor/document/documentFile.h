#pragma once

#include "document/document.h"

#include <filesystem>
#include <span>

namespace compositor {

/// A document is one file: a few lines of text, and after them the pictures as PNG, each once however many layers share
/// it.
///
///     compositor document 1
///     canvas 640 480
///     picture 1234              bytes of the first picture, number 0
///     layer 0 16 -8 0.5 multiply The name, up to the end of the line
///     data
///
/// Saving is whole or not at all. @returns false when it was stopped. @throws ImageError naming the path and the reason.
bool saveDocument(Document const& document, std::filesystem::path const& path, Progress const& progress = {});

/// Whether the bytes begin like a document.
bool isDocument(std::span<std::byte const> bytes);

/// @throws DocumentError with the line or the picture that is wrong.
Document decodeDocument(std::span<std::byte const> bytes);

} // namespace compositor
