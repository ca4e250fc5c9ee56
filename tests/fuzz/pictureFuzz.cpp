// Input: a picture file.
#include "image/pngFile.h"
#include "tests/fuzz/fuzzing.h"
#include "tests/fuzz/pngChecksums.h"

using namespace compositor;
using namespace KoFuzz;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    if (!areSmall(bytes)) return -1;
    try {
        Picture const picture = decodePng(std::as_bytes(std::span(bytes)));
        checkSize(picture.size());
        expect(decodePng(encodePng(picture)) == picture, "a picture that was read can be written and read again");
    } catch (ImageError const&) {
    }
    return 0;
}
