// Input: a command line.
#include "resmgt/src/posix/commandLine.h"
#include "tests/fuzz/fuzzing.h"

#include <optional>
#include <regex>
#include <utility>

namespace {

using namespace Ko;
using namespace KoFuzz;

std::optional<std::vector<std::string>> modelSplit(std::string const& text) {
    static std::regex const piece(
        R"re(([ \t\n\r\f\v])|'([^']*)'|"((?:[^"\\]|\\[\s\S])*)"|\\([\s\S])|([^'"\\]))re", std::regex::optimize);
    static std::regex const escape(R"(\\(?:\n|([$`"\\])))");
    std::vector<std::string> words;
    std::optional<std::string> word;
    auto next = text.begin();
    std::smatch found;
    while (std::regex_search(next, text.end(), found, piece, std::regex_constants::match_continuous)) {
        next = found[0].second;
        if (found.str(4) == "\n") continue;
        if (!found[1].matched)
            word = word.value_or("") + found.str(2) + std::regex_replace(found.str(3), escape, "$1") + found.str(4) +
                   found.str(5);
        else if (word)
            words.push_back(*std::exchange(word, std::nullopt));
    }
    if (next != text.end() || text.find('\0') != text.npos) return std::nullopt;
    if (word) words.push_back(*word);
    return words;
}

std::string quoted(std::string const& word) {
    std::string text = "'";
    for (char const character : word)
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return text + "' ";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(textOf(data, size));
    Vector<LiString> words;
    bool const isWhole = splitCommandLine(text, words);
    auto const expected = modelSplit(text);
    expect(isWhole == expected.has_value(), "what has no end is refused, and nothing else");
    if (!isWhole) return 0;
    expect(words == *expected, "words are cut as a shell does");
    std::string again;
    for (LiString const& word : words)
        again += quoted(word);
    Vector<LiString> wordsAgain;
    expect(splitCommandLine(again, wordsAgain) && words == wordsAgain, "quoted words stay as they are");
    return 0;
}
