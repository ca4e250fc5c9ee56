#include "document/document.h"

#include <algorithm>
#include <utility>

namespace compositor {

namespace {

bool isPrintable(char byte) {
    return static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F;
}

} // namespace

Document::Document(Size canvas) {
    setCanvas(canvas);
}

void Document::setCanvas(Size canvas) {
    checkSize(canvas);
    _canvas = canvas;
}

Layer const& Document::layer(std::string const& name) const {
    auto const found = _idsByName.find(name);
    if (found == _idsByName.end()) throw DocumentError("there is no layer \"" + name + "\"");
    return layer(found->second);
}

bool Document::contains(LayerId id) const {
    return std::ranges::find(_layers, id, &Layer::id) != _layers.end();
}

std::size_t Document::indexOf(LayerId id) const {
    auto const found = std::ranges::find(_layers, id, &Layer::id);
    if (found == _layers.end()) throw DocumentError("the layer is no longer there");
    return static_cast<std::size_t>(found - _layers.begin());
}

void Document::insert(std::size_t index, Layer layer) {
    check(layer);
    if (index != _layers.size()) checkIndex(index);
    // Allocate first: nothing has changed yet if that throws.
    if (_layers.size() == _layers.capacity()) _layers.reserve(2 * _layers.size() + 1);
    _idsByName.emplace(layer.name, layer.id);
    _lastId = std::max(_lastId, layer.id);
    _layers.insert(_layers.begin() + static_cast<std::ptrdiff_t>(index), std::move(layer));
}

Layer Document::remove(LayerId id) {
    auto const position = _layers.begin() + static_cast<std::ptrdiff_t>(indexOf(id));
    _idsByName.erase(position->name);
    Layer removed = std::move(*position);
    _layers.erase(position);
    return removed;
}

void Document::reorder(LayerId id, std::size_t index) {
    std::size_t const from = indexOf(id);
    checkIndex(index);
    auto const at = [this](std::size_t position) { return _layers.begin() + static_cast<std::ptrdiff_t>(position); };
    if (from < index)
        std::rotate(at(from), at(from + 1), at(index + 1));
    else
        std::rotate(at(index), at(from), at(from + 1));
}

void Document::replace(Layer layer) {
    std::size_t const index = indexOf(layer.id);
    check(layer);
    if (layer.name != _layers[index].name) {
        _idsByName.emplace(layer.name, layer.id);
        _idsByName.erase(_layers[index].name);
    }
    _layers[index] = std::move(layer);
}

void Document::check(Layer const& layer) const {
    if (layer.name.empty() || !std::ranges::all_of(layer.name, isPrintable))
        throw DocumentError("a layer's name must not be empty or hold control characters");
    auto const sameName = _idsByName.find(layer.name);
    if (sameName != _idsByName.end() && sameName->second != layer.id)
        throw DocumentError("there is a layer \"" + layer.name + "\" already");
    if (!(layer.placed.opacity >= 0.0f && layer.placed.opacity <= 1.0f))
        throw DocumentError("an opacity lies between 0 and 1");
}

void Document::checkIndex(std::size_t index) const {
    if (index >= _layers.size())
        throw DocumentError("position " + std::to_string(index) + " lies above the highest layer");
}

Renderer Document::renderer() const {
    std::vector<PlacedPicture> placed;
    std::ranges::transform(_layers, std::back_inserter(placed), &Layer::placed);
    return Renderer(_canvas, std::move(placed));
}

} // namespace compositor
