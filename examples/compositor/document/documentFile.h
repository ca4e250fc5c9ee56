#pragma once

#include "document/document.h"

#include <cstdint>
#include <filesystem>
#include <istream>

namespace compositor {

/// Saves a document as one file: some lines of text, followed by the pictures as PNG. A picture that several layers share is
/// stored once.
///
///     compositor document 1
///     canvas 640 480
///     picture 1234              length in bytes of picture number 0; leading zeros are allowed
///     layer 0 16 -8 0.5 multiply The name, up to the end of the line
///     hidden 0 0 0 1 over The same for a layer that is not shown
///     data
///
/// The file is replaced as a whole or not at all. Needs little memory besides the document.
/// @returns false when `progress` stopped it. @throws ImageError naming the path and the reason.
bool saveDocument(Document const& document, std::filesystem::path const& path, Progress const& progress = {});

/// Reads a document from the next `length` bytes of a seekable stream.
/// @throws DocumentError with the line or the picture that is wrong.
[[nodiscard]] Document readDocument(std::istream& stream, std::uint64_t length);

} // namespace compositor
