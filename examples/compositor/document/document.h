#pragma once

#include "image/render.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace compositor {

/// A change that a document does not allow. The message is for users.
class DocumentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Identifies a layer within its document.
using LayerId = std::uint64_t;

/// One layer. Its id never changes.
struct Layer {
    LayerId id = 0;
    std::string name;
    PlacedPicture placed;

    bool operator==(Layer const&) const = default;
};

/// A canvas with layers from bottom to top. A value: copies are independent, and cheap because pictures are shared.
/// Operations that throw have changed nothing.
class Document {
public:
    Document() = default;
    /// @throws ImageError as `checkSize`.
    explicit Document(Size canvas);

    [[nodiscard]] Size canvas() const { return _canvas; }
    void setCanvas(Size canvas);
    [[nodiscard]] std::vector<Layer> const& layers() const { return _layers; }

    /// An id that this document has never used.
    [[nodiscard]] LayerId newId() { return ++_lastId; }

    [[nodiscard]] bool contains(LayerId id) const;
    /// @throws DocumentError when there is no such layer.
    [[nodiscard]] Layer const& layer(LayerId id) const { return _layers[indexOf(id)]; }
    [[nodiscard]] Layer const& layer(std::string const& name) const;
    /// The position of a layer, 0 at the bottom. @throws DocumentError when there is no such layer.
    [[nodiscard]] std::size_t indexOf(LayerId id) const;

    /// @throws DocumentError unless the layer of that id, new or not, can have this name and opacity.
    void check(Layer const& layer) const;
    /// @throws DocumentError unless there is a layer at the index.
    void checkIndex(std::size_t index) const;
    /// Inserts a layer at an index, 0 at the bottom. @throws DocumentError as `check`, and for an index above the top.
    void insert(std::size_t index, Layer layer);
    /// @returns the removed layer.
    Layer remove(LayerId id);
    /// Moves a layer to another index.
    void reorder(LayerId id, std::size_t index);
    /// Replaces the layer that has the same id.
    void replace(Layer layer);

    [[nodiscard]] Renderer renderer() const;

private:
    Size _canvas{640, 480};
    std::vector<Layer> _layers;
    std::unordered_map<std::string, LayerId> _idsByName;
    LayerId _lastId = 0;
};

} // namespace compositor
