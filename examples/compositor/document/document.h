#pragma once

#include "image/render.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace compositor {

/// What a document does not allow, in words for a person.
class DocumentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One layer; its id stays the same whatever else is changed.
struct Layer {
    std::uint64_t id = 0;
    std::string name;
    PlacedPicture placed;
};

/// A canvas with layers from bottom to top. A value: copies are independent, and cheap because pictures are shared.
/// What it refuses leaves it as it was.
class Document {
public:
    Document() = default;
    /// @throws ImageError as `checkSize`.
    explicit Document(Size canvas);

    Size canvas() const { return _canvas; }
    void setCanvas(Size canvas);
    std::vector<Layer> const& layers() const { return _layers; }

    /// An id that no layer of this document has or had.
    std::uint64_t newId() { return ++_lastId; }

    /// @throws DocumentError when there is no such layer.
    Layer const& layer(std::uint64_t id) const { return _layers[indexOf(id)]; }
    Layer const& layer(std::string const& name) const;
    std::size_t indexOf(std::uint64_t id) const;

    /// @throws DocumentError when no layer of that id can have this name and opacity.
    void check(Layer const& layer) const;
    /// Puts a layer at an index, 0 at the bottom. @throws DocumentError as `check`, and for an index that is not possible.
    void insert(std::size_t index, Layer layer);
    Layer remove(std::uint64_t id);
    /// Moves a layer to another index.
    void reorder(std::uint64_t id, std::size_t index);
    /// Gives the layer of that id another name, place, opacity or blend mode.
    void replace(Layer layer);

    Renderer renderer() const;

private:
    Size _canvas{640, 480};
    std::vector<Layer> _layers;
    std::unordered_map<std::string, std::uint64_t> _idsByName;
    std::uint64_t _lastId = 0;
};

} // namespace compositor
