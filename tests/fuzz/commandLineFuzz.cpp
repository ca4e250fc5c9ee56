// Input: a command line.
#include "resmgt/src/posix/commandLine.h"
#include "tests/fuzz/fuzzing.h"

#include <optional>
#include <utility>

namespace {

using namespace Ko;
using namespace KoFuzz;

bool isOneOf(char character, std::string_view set) {
    return set.find(character) != set.npos;
}

// One pass, with the quotation that is open as the only state.
std::optional<std::vector<std::string>> modelSplit(std::string const& text) {
    std::vector<std::string> words;
    std::optional<std::string> word;
    char quote = '\0';
    if (text.find('\0') != std::string::npos) return std::nullopt;
    auto const add = [&word](std::string const& piece) { word = word.value_or("") + piece; };
    for (std::size_t index = 0; index < text.size(); ++index) {
        char const character = text[index];
        std::string const next = text.substr(index + 1, 1);
        if (character == quote) {
            quote = '\0';
        } else if (character == '\\' && quote != '\'' && (!quote || (!next.empty() && isOneOf(next[0], "$`\"\\\n")))) {
            if (next.empty()) return std::nullopt;
            if (next != "\n") add(next);
            ++index;
        } else if (!quote && isOneOf(character, "'\"")) {
            quote = character;
            add("");
        } else if (!quote && isOneOf(character, " \t\n\r\f\v")) {
            if (word) words.push_back(*std::exchange(word, std::nullopt));
        } else {
            add({character});
        }
    }
    if (word) words.push_back(*word);
    return quote ? std::nullopt : std::optional(words);
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
