// Input: a command line.
#include "resmgt/src/posix/commandLine.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace Ko;
using namespace KoFuzz;

std::string quoted(std::string const& word) {
    std::string text = "'";
    for (char const character : word)
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return text + "' ";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(textOf(data, size));
    Vector<LiString> words, wordsAgain;
    bool const isWhole = splitCommandLine(text, words);
    expect(
        isWhole || text.find_first_of(std::string("'\"\\\0", 4)) != text.npos, "only quotations and zeros are refused");
    std::string again;
    for (LiString const& word : words)
        again += quoted(word);
    expect(!isWhole || (splitCommandLine(again, wordsAgain) && words == wordsAgain), "quoted words stay as they are");
    return 0;
}
