#pragma once

#include "document/document.h"
#include "internalAPI/snItemBasic.h"
#include "internalAPI/snItemConvert.h"

#include <functional>
#include <ostream>

namespace compositor {

class Editor;

/// A layer of an editor's document, with a copy of the layer as it was when the item was created. Used in selections, drags
/// and the clipboard. Equality compares editor and id only.
struct LayerRef {
    Editor* editor;
    Layer layer;

    bool operator==(LayerRef const& other) const { return editor == other.editor && layer.id == other.layer.id; }
};

using LayerItem = Ko::SnItemBasic<LayerRef>;
/// The layers that an action is for, or the document.
using Targets = Ko::List<Ko::RCShdPtr<Ko::SnItem const>>;

inline std::ostream& operator<<(std::ostream& stream, LayerRef const& ref) {
    return stream << ref.layer.name;
}

} // namespace compositor

template <>
struct std::hash<compositor::LayerRef> {
    std::size_t operator()(compositor::LayerRef const& ref) const noexcept {
        return std::hash<compositor::LayerId>()(ref.layer.id);
    }
};

KO_DECLARE_ITEM_TYPE(, compositor::LayerRef)
KO_DECLARE_ITEM_TYPE(, compositor::Editor*)
