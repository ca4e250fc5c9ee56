// Input: a document file.
#include "document/documentFile.h"
#include "tests/fuzz/fuzzing.h"
#include "tests/fuzz/pngChecksums.h"

#include <algorithm>
#include <optional>
#include <sstream>

namespace {

using namespace compositor;
using namespace KoFuzz;

std::optional<Document> decode(std::string const& bytes) try {
    std::istringstream stream(bytes);
    return readDocument(stream, bytes.size());
} catch (DocumentError const&) {
    return std::nullopt;
}

bool isAlike(Layer const& left, Layer const& right) {
    PlacedPicture const &one = left.placed, &other = right.placed;
    return left.name == right.name && *one.picture == *other.picture && one.x == other.x && one.y == other.y &&
           one.opacity == other.opacity && one.blend == other.blend;
}

void checkSaving(Document const& document) {
    static Folder const folder;
    expect(saveDocument(document, folder / "document.koc"), "a document can be saved");
    auto const again = decode(folder.read("document.koc"));
    expect(again && again->canvas() == document.canvas() &&
               std::ranges::equal(document.layers(), again->layers(), &isAlike),
        "a document that was saved is the same when it is opened again");
}

void checkRendering(Document const& document) {
    constexpr int most = 300;
    std::vector<Colour> row(static_cast<std::size_t>(std::min(document.canvas().width, most)));
    for (int y = 0; y < std::min(document.canvas().height, most); y += 7)
        document.renderer().renderRow(0, y, row);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    if (!areSmall(bytes)) return -1;
    auto const document = decode({bytes.begin(), bytes.end()});
    if (!document) return 0;
    for (Layer const& layer : document->layers())
        expect(layer.placed.picture != nullptr, "a layer has a picture");
    checkSaving(*document);
    checkRendering(*document);
    return 0;
}
