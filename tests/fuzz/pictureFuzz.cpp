// Input: a picture file.
#include "tests/examples/compositor/pictures.h"
#include "tests/fuzz/fuzzing.h"
#include "tests/fuzz/pngChecksums.h"

using namespace compositor;
using namespace KoFuzz;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    if (!areSmall(bytes)) return -1;
    try {
        Picture const picture = KoTest::decode({bytes.begin(), bytes.end()});
        checkSize(picture.size());
        expect(KoTest::decode(KoTest::encode(picture)) == picture,
            "a picture that was read can be written and read again");
    } catch (ImageError const&) {
    }
    return 0;
}
