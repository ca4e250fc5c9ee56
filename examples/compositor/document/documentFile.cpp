#include "document/documentFile.h"

#include "image/atomicFile.h"
#include "image/pngFile.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <string_view>
#include <utility>

namespace compositor {

namespace {

constexpr std::string_view magic = "compositor document 1\n";

template <class Number>
std::string toText(Number number) {
    char buffer[64];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, number).ptr};
}

/// Reads the lines of the text, and knows where it is.
class Header {
public:
    explicit Header(std::string_view text) : _text(text) {}

    // The next line's words are then taken by `word` and `number`, its rest by `rest`.
    std::string_view nextLine() {
        auto const end = _text.find('\n', _next);
        if (end == std::string_view::npos) fail("the text ends too early");
        _line = _text.substr(_next, end - _next);
        _next = end + 1;
        ++_number;
        return _line;
    }
    std::string_view word() {
        auto const end = _line.find(' ');
        std::string_view const result = _line.substr(0, end);
        _line.remove_prefix(end == std::string_view::npos ? _line.size() : end + 1);
        return result;
    }
    template <class Number>
    Number number() {
        std::string_view const text = word();
        Number value{};
        auto const [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || rest != text.data() + text.size())
            fail("\"" + std::string(text) + "\" is not a number that can stand here");
        return value;
    }
    std::string_view rest() { return std::exchange(_line, {}); }
    std::size_t position() const { return _next; }

    [[noreturn]] void fail(std::string const& what) const {
        throw DocumentError("line " + std::to_string(_number) + ": " + what);
    }

private:
    std::string_view _text;
    std::string_view _line;
    std::size_t _next = 0;
    int _number = 0;
};

struct LayerLine {
    std::size_t picture;
    Layer layer;
};

std::vector<LayerLine> readLayers(Header& header, Document& document, std::vector<std::size_t>& pictureSizes) {
    std::vector<LayerLine> layers;
    for (header.nextLine();; header.nextLine()) {
        std::string_view const word = header.word();
        if (word == "data") return layers;
        if (word == "picture") {
            pictureSizes.push_back(header.number<std::size_t>());
        } else if (word == "layer") {
            LayerLine line{header.number<std::size_t>(), {}};
            if (line.picture >= pictureSizes.size()) header.fail("there is no picture " + std::to_string(line.picture));
            PlacedPicture& placed = line.layer.placed;
            placed.x = header.number<int>();
            placed.y = header.number<int>();
            placed.opacity = header.number<float>();
            try {
                placed.blend = blendModeOf(std::string(header.word()));
                line.layer.name = header.rest();
                line.layer.id = document.newId();
                document.insert(document.layers().size(), line.layer);
            } catch (std::runtime_error const& error) {
                header.fail(error.what());
            }
            layers.push_back(line);
        } else {
            header.fail("unknown word \"" + std::string(word) + "\"");
        }
    }
}

std::vector<SharedPicture> readPictures(std::span<std::byte const> bytes, std::vector<std::size_t> const& sizes) {
    std::vector<SharedPicture> pictures;
    for (std::size_t const size : sizes) {
        std::string const name = "picture " + std::to_string(pictures.size()) + ": ";
        if (size > bytes.size()) throw DocumentError(name + "the file ends before it does");
        try {
            pictures.push_back(std::make_shared<Picture const>(decodePng(bytes.first(size))));
        } catch (ImageError const& error) {
            throw DocumentError(name + error.what());
        }
        bytes = bytes.subspan(size);
    }
    if (!bytes.empty())
        throw DocumentError("there are " + std::to_string(bytes.size()) + " bytes after the last picture");
    return pictures;
}

} // namespace

bool saveDocument(Document const& document, std::filesystem::path const& path, Progress const& progress) {
    std::map<SharedPicture, std::size_t> numbers;
    std::vector<std::vector<std::byte>> pictures;
    std::string text(magic);
    std::string layers;
    int done = 0;
    text += "canvas " + toText(document.canvas().width) + " " + toText(document.canvas().height) + "\n";
    for (Layer const& layer : document.layers()) {
        PlacedPicture const& placed = layer.placed;
        auto const [number, isNew] = numbers.try_emplace(placed.picture, pictures.size());
        if (isNew) {
            pictures.push_back(encodePng(*placed.picture));
            text += "picture " + toText(pictures.back().size()) + "\n";
        }
        layers += "layer " + toText(number->second) + " " + toText(placed.x) + " " + toText(placed.y) + " " +
                  toText(placed.opacity) + " " + toString(placed.blend) + " " + layer.name + "\n";
        if (progress && !progress(++done, static_cast<int>(document.layers().size()) + 1)) return false;
    }
    text += layers + "data\n";
    AtomicFile file(path);
    file.write(text.data(), text.size());
    for (std::vector<std::byte> const& picture : pictures)
        file.write(picture.data(), picture.size());
    file.commit();
    if (progress) progress(done + 1, done + 1);
    return true;
}

bool isDocument(std::span<std::byte const> bytes) {
    return bytes.size() >= magic.size() &&
           std::string_view(reinterpret_cast<char const*>(bytes.data()), magic.size()) == magic;
}

Document decodeDocument(std::span<std::byte const> bytes) {
    if (!isDocument(bytes)) throw DocumentError("it is neither a document nor a PNG picture");
    Header header({reinterpret_cast<char const*>(bytes.data()), bytes.size()});
    header.nextLine();
    header.nextLine();
    if (header.word() != "canvas") header.fail("expected the canvas");
    Document document;
    try {
        int const width = header.number<int>();
        document.setCanvas({width, header.number<int>()});
    } catch (ImageError const& error) {
        header.fail(error.what());
    }
    std::vector<std::size_t> pictureSizes;
    std::vector<LayerLine> const layers = readLayers(header, document, pictureSizes);
    std::vector<SharedPicture> const pictures = readPictures(bytes.subspan(header.position()), pictureSizes);
    for (auto [picture, layer] : layers) {
        layer.placed.picture = pictures[picture];
        document.replace(layer);
    }
    return document;
}

} // namespace compositor
