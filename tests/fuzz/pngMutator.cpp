#include "tests/fuzz/pngChecksums.h"

extern "C" {

std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

// Repairs the checksums in seven of eight mutations.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum, unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maximum);
    if (seed % 8 != 0) KoFuzz::repairChecksums({data, size});
    return size;
}
}
