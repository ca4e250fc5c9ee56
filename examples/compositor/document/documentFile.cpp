#include "document/documentFile.h"

#include "image/atomicFile.h"
#include "image/pngFile.h"
#include "text/number.h"

#include <algorithm>
#include <map>
#include <span>
#include <string_view>
#include <utility>

namespace compositor {

namespace {

constexpr std::string_view magic = "compositor document ";
constexpr int version = 1;
constexpr std::size_t longestLine = std::size_t{1} << 20;

/// Reads the lines of text, and counts them for error messages.
class HeaderReader {
public:
    HeaderReader(std::istream& stream, std::uint64_t length) : _stream(*stream.rdbuf()), _left(length) {}

    /// Reads the next line, for `word`, `number` and `rest`. @returns false when the input ends before the line.
    bool tryNextLine() {
        ++_number;
        _line.clear();
        _next = 0;
        while (_left > 0 && _line.size() < longestLine) {
            int const character = _stream.sbumpc();
            if (character == std::char_traits<char>::eof()) break;
            --_left;
            if (character == '\n') return true;
            _line += static_cast<char>(character);
        }
        return false;
    }
    void nextLine() {
        if (!tryNextLine()) fail(_line.size() == longestLine ? "it is too long" : "the text ends too early");
    }
    bool skip(std::string_view begin) {
        bool const isThere = rest().starts_with(begin);
        if (isThere) _next += begin.size();
        return isThere;
    }
    std::string_view word() {
        std::string_view const text = rest();
        auto const end = std::min(text.find(' '), text.size());
        _next = std::min(_next + end + 1, _line.size());
        return text.substr(0, end);
    }
    template <class Number>
    Number number() {
        std::string_view const text = word();
        auto const value = toNumber<Number>(text);
        if (!value) fail("\"" + std::string(text) + "\" is not a number that can stand here");
        return *value;
    }
    std::string_view rest() const { return std::string_view(_line).substr(_next); }
    /// Bytes after the line.
    std::uint64_t left() const { return _left; }

    [[noreturn]] void fail(std::string const& what) const {
        throw DocumentError("line " + std::to_string(_number) + ": " + what);
    }

private:
    std::streambuf& _stream;
    std::uint64_t _left;
    std::string _line;
    std::size_t _next = 0;
    int _number = 0;
};

/// A picture whose length the header has announced. Layers refer to it before its pixels have been read.
struct Announced {
    std::uint64_t length;
    std::shared_ptr<Picture> picture;
};

void readVersion(HeaderReader& header) {
    if (!header.tryNextLine() || !header.skip(magic)) throw DocumentError("it is neither a document nor a PNG picture");
    int const number = header.number<int>();
    if (number > version)
        throw DocumentError("a newer compositor has written it: it is a document of version " + std::to_string(number) +
                            ", and this compositor reads version " + std::to_string(version));
    if (number < version) header.fail("there is no version " + std::to_string(number));
}

void readCanvas(HeaderReader& header, Document& document) {
    header.nextLine();
    if (header.word() != "canvas") header.fail("expected the canvas");
    int const width = header.number<int>();
    document.setCanvas({width, header.number<int>()});
}

void readLayer(HeaderReader& header, Document& document, std::vector<Announced> const& pictures, bool isVisible) {
    auto const picture = header.number<std::size_t>();
    if (picture >= pictures.size()) header.fail("there is no picture " + std::to_string(picture));
    PlacedPicture placed{pictures[picture].picture};
    placed.x = header.number<int>();
    placed.y = header.number<int>();
    placed.opacity = header.number<float>();
    placed.blend = blendModeOf(std::string(header.word()));
    placed.isVisible = isVisible;
    try {
        document.insert(document.layers().size(), {document.newId(), std::string(header.rest()), placed});
    } catch (DocumentError const& error) {
        header.fail(error.what());
    }
}

std::vector<Announced> readLayers(HeaderReader& header, Document& document) {
    std::vector<Announced> pictures;
    for (header.nextLine();; header.nextLine()) {
        std::string const word(header.word());
        if (word == "data") return pictures;
        if (word == "picture")
            pictures.push_back({header.number<std::uint64_t>(), std::make_shared<Picture>(Size{1, 1})});
        else if (word == "layer" || word == "hidden")
            readLayer(header, document, pictures, word == "layer");
        else
            header.fail("unknown word \"" + word + "\"");
    }
}

void readPictures(std::istream& stream, std::uint64_t left, std::vector<Announced> const& pictures) {
    for (std::size_t number = 0; number < pictures.size(); ++number) {
        auto const& [length, picture] = pictures[number];
        std::string const name = "picture " + std::to_string(number) + ": ";
        if (length > left) throw DocumentError(name + "the file ends before it does");
        try {
            *picture = readPng(stream, length);
        } catch (ImageError const& error) {
            throw DocumentError(name + error.what());
        }
        left -= length;
    }
    if (left > 0) throw DocumentError("there are " + std::to_string(left) + " bytes after the last picture");
}

/// The pictures of a document, each once, and their numbers in the file.
struct Pictures {
    explicit Pictures(Document const& document) {
        for (Layer const& layer : document.layers())
            if (numbers.try_emplace(layer.placed.picture.get(), all.size()).second)
                all.push_back(layer.placed.picture.get());
        lengths.resize(all.size());
    }

    std::vector<Picture const*> all;
    std::map<Picture const*, std::size_t> numbers;
    std::vector<std::uint64_t> lengths;
};

// The lengths of the pictures have a fixed width, so that the header can be overwritten after the pictures were written.
std::string headerOf(Document const& document, Pictures const& pictures) {
    constexpr std::size_t digits = 12;
    std::string text = std::string(magic) + toText(version) + "\ncanvas " + toText(document.canvas().width) + " " +
                       toText(document.canvas().height) + "\n";
    for (std::uint64_t const length : pictures.lengths) {
        std::string const number = toText(length);
        text += "picture " + std::string(digits - number.size(), '0') + number + "\n";
    }
    for (Layer const& layer : document.layers()) {
        PlacedPicture const& placed = layer.placed;
        text += (placed.isVisible ? "layer " : "hidden ") + toText(pictures.numbers.at(placed.picture.get())) + " " +
                toText(placed.x) + " " + toText(placed.y) + " " + toText(placed.opacity) + " " +
                toString(placed.blend) + " " + layer.name + "\n";
    }
    return text + "data\n";
}

struct Stopped {};

void writeDocument(Document const& document, AtomicFile& file, Progress const& progress) {
    Pictures pictures(document);
    int done = 0;
    int const total = static_cast<int>(pictures.all.size()) + 1;
    auto const report = [&] {
        if (progress && !progress(done, total)) throw Stopped();
    };
    auto const writeHeader = [&] {
        file.write(std::as_bytes(std::span(std::string_view(headerOf(document, pictures)))));
    };
    writeHeader();
    for (Picture const* const picture : pictures.all) {
        std::uint64_t& length = pictures.lengths[static_cast<std::size_t>(done)];
        writePng(*picture, [&](std::span<std::byte const> bytes) {
            report();
            file.write(bytes);
            length += bytes.size();
        });
        ++done;
    }
    report();
    file.rewind();
    writeHeader();
    file.commit();
    if (progress) progress(total, total);
}

} // namespace

bool saveDocument(Document const& document, std::filesystem::path const& path, Progress const& progress) {
    AtomicFile file(path);
    try {
        writeDocument(document, file, progress);
        return true;
    } catch (Stopped const&) {
        return false;
    }
}

Document readDocument(std::istream& stream, std::uint64_t length) {
    HeaderReader header(stream, length);
    Document document;
    std::vector<Announced> pictures;
    readVersion(header);
    try {
        readCanvas(header, document);
        pictures = readLayers(header, document);
    } catch (ImageError const& error) {
        header.fail(error.what());
    }
    readPictures(stream, header.left(), pictures);
    return document;
}

} // namespace compositor
