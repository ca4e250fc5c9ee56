#pragma once

#include "framework/dragAndDrop/drFormats.h"
#include "host/editor.h"

#include <vector>

namespace compositor {

/// The layers in forms that other programs understand: a picture of them, as small as possible, and their names.
[[nodiscard]] Ko::DrFormats formatsOf(std::vector<Layer> const& layers);

/// Adds a `LayerItem` for each picture that another program has copied or drags: files, or a picture itself. Files that are none are
/// left out.
void importLayers(Editor& editor, Ko::DrFormats const& formats, Ko::SnSelection& items);

} // namespace compositor
