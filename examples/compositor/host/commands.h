#pragma once

#include "document/document.h"
#include "framework/command/cmCommand.h"

#include <string>

namespace compositor {

/// The undoable changes of a document, which must outlive the commands.
///
/// A command that keeps a picture outside of the document reports its size to the history (`Ko::CmSized`).
///
/// Commands refer to layers by id. When the document refuses a change, for instance because the layer was removed without
/// logging, the command throws `Ko::CmEx::ExCommandFailure` and the document is unchanged.

/// Adds a new layer on top.
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeAddLayer(Document& document, Layer layer);
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeRemoveLayer(Document& document, Layer const& layer);
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeReorderLayer(Document& document, Layer const& layer, std::size_t index);
/// Replaces the layer that has the same id.
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeChangeLayer(Document& document, Layer changed, std::string description);
/// The same, as a step that joins the last one if that is a nudge of the same layer (`Ko::CmMergeable`).
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeNudgeLayer(Document& document, Layer changed, std::string description);
[[nodiscard]] Ko::RCShdPtr<Ko::CmCommand> makeSetCanvas(Document& document, Size canvas);

} // namespace compositor
