#include "host/layerFormats.h"

#include "document/documentFile.h"
#include "host/layerItem.h"
#include "image/inputFile.h"
#include "image/pngFile.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>

namespace compositor {

namespace {

constexpr char const* pngType = "image/png";
constexpr char const* filesType = "text/uri-list";
constexpr std::string_view fileScheme = "file://";

std::string pictureOf(std::vector<Layer> const& layers) {
    int left = std::numeric_limits<int>::max(), top = left, right = std::numeric_limits<int>::min(), bottom = right;
    std::vector<PlacedPicture> placed;
    for (Layer const& layer : layers) {
        placed.push_back(layer.placed);
        Size const size = layer.placed.picture->size();
        left = std::min(left, layer.placed.x);
        top = std::min(top, layer.placed.y);
        right = std::max(right, layer.placed.x + size.width);
        bottom = std::max(bottom, layer.placed.y + size.height);
    }
    for (PlacedPicture& picture : placed) {
        picture.x -= left;
        picture.y -= top;
    }
    std::string bytes;
    auto const append = [&](std::span<std::byte const> piece) {
        bytes.append(reinterpret_cast<char const*>(piece.data()), piece.size());
    };
    if (auto const picture = Renderer({right - left, bottom - top}, placed).renderToPicture())
        writePng(*picture, append);
    return bytes;
}

// "file:///a%20b.png" is "/a b.png".
std::string pathOf(std::string_view address) {
    address.remove_prefix(std::min(address.find('/', fileScheme.size()), address.size()));
    std::string path;
    for (std::size_t index = 0; index < address.size(); ++index) {
        unsigned char byte = 0;
        char const* const digits = address.data() + index + 1;
        bool const isEscaped = address[index] == '%' && index + 2 < address.size() &&
                               std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        path += isEscaped ? static_cast<char>(byte) : address[index];
        if (isEscaped) index += 2;
    }
    return path;
}

void addPicture(Editor& editor, std::string const& name, Picture picture, Ko::SnSelection& items) {
    // Ids of layers that are in no document: different ones, since equal items are in a selection once.
    auto const id = std::numeric_limits<LayerId>::max() - items.getCount();
    items.add(LayerItem::create({&editor, {id, name, {std::make_shared<Picture const>(std::move(picture))}}}));
}

void addFile(Editor& editor, std::filesystem::path const& path, Ko::SnSelection& items) {
    InputFile file(path);
    if (isPng(file.stream)) return addPicture(editor, path.stem().string(), readPng(file.stream, file.length), items);
    Document const document = readDocument(file.stream, file.length);
    for (Layer layer : document.layers()) {
        layer.id = std::numeric_limits<LayerId>::max() - items.getCount();
        items.add(LayerItem::create({&editor, layer}));
    }
}

void addFiles(Editor& editor, std::string const& addresses, Ko::SnSelection& items) {
    std::istringstream lines(addresses);
    for (std::string line; std::getline(lines, line);) {
        while (line.ends_with('\r') || line.ends_with('\0'))
            line.pop_back();
        if (!line.starts_with(fileScheme)) continue;
        try {
            addFile(editor, pathOf(line), items);
        } catch (std::runtime_error const&) {
            // Not a picture: another kind of file beside pictures.
        }
    }
}

} // namespace

Ko::DrFormats formatsOf(std::vector<Layer> const& layers) {
    Ko::DrFormats formats;
    formats.add(pngType, [layers] { return pictureOf(layers); });
    formats.add("text/plain;charset=utf-8", [layers] {
        std::string names;
        for (Layer const& layer : layers)
            names += (names.empty() ? "" : "\n") + layer.name;
        return names;
    });
    return formats;
}

void importLayers(Editor& editor, Ko::DrFormats const& formats, Ko::SnSelection& items) {
    if (auto const addresses = formats.make(filesType)) addFiles(editor, *addresses, items);
    if (!items.isEmpty()) return;
    auto const png = formats.make(pngType);
    if (!png || png->empty()) return;
    std::istringstream stream(*png);
    try {
        addPicture(editor, "Pasted", readPng(stream, png->size()), items);
    } catch (ImageError const&) {
        // The other program has sent something else than it has announced.
    }
}

} // namespace compositor
