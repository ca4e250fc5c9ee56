#pragma once

#include "document/document.h"
#include "framework/command/cmCommand.h"

#include <string>

namespace compositor {

/// The undoable changes of a document, which must outlive them.
///
/// Layers are found by their id, so that a command never touches another layer than its own. Where the document refuses a
/// change, because somebody removed the layer without logging, the command fails as `Ko::CmEx::ExCommandFailure` and leaves
/// the document as it was.

/// Puts a new layer on top.
Ko::RCShdPtr<Ko::CmCommand> makeAddLayer(Document& document, Layer layer);
Ko::RCShdPtr<Ko::CmCommand> makeRemoveLayer(Document& document, Layer const& layer);
Ko::RCShdPtr<Ko::CmCommand> makeReorderLayer(Document& document, Layer const& layer, std::size_t index);
/// Gives the layer of that id other properties.
Ko::RCShdPtr<Ko::CmCommand> makeChangeLayer(Document& document, Layer changed, std::string description);
Ko::RCShdPtr<Ko::CmCommand> makeSetCanvas(Document& document, Size canvas);

} // namespace compositor
