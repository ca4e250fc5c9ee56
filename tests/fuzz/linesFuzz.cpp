// Input: the lengths of the pieces, one byte each; in the next field the output of a program.
#include "framework/bgTask/src/bgLines.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace Ko;
using namespace KoFuzz;

struct Lines {
    std::vector<std::string> whole;
    std::string unfinished;
    bool operator==(Lines const&) const = default;
};

Lines modelSplit(std::string_view text) {
    Lines lines;
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        std::string_view const line = text.substr(0, end);
        lines.whole.emplace_back(line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0)));
    }
    lines.unfinished = text;
    return lines;
}

Lines splitInPieces(std::string_view text, std::string const& lengths) {
    Lines lines;
    BgLines splitter;
    for (std::size_t index = 0; !text.empty(); ++index) {
        std::size_t const length =
            lengths.empty() ? text.size() : static_cast<unsigned char>(lengths[index % lengths.size()]);
        // A copy of exactly the piece, so that the address sanitizer notices a read past its end.
        std::vector<char> const piece(
            text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(length + 1, text.size())));
        splitter.add({piece.data(), piece.size()}, [&](std::string const& line) { lines.whole.push_back(line); });
        text.remove_prefix(piece.size());
    }
    lines.unfinished = splitter.getUnfinished();
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const fields = fieldsOf(textOf(data, size), 2);
    expect(splitInPieces(fields[1], fields[0]) == modelSplit(fields[1]), "the lines do not depend on the pieces");
    return 0;
}
