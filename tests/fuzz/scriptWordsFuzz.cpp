// Input: a script of the compositor, which is split into words but not run.
#include "script/script.h"
#include "tests/fuzz/fuzzing.h"

#include <sstream>

namespace {

using namespace compositor;
using namespace KoFuzz;

using Words = std::vector<std::string>;

// Nothing for a line that is refused.
std::optional<Words> modelSplit(std::string const& line) {
    Words words;
    bool inWord = false, inQuotes = false, wasQuoted = false;
    for (std::size_t index = 0; index < line.size(); ++index) {
        char const character = line[index];
        bool const isBlank = character == ' ' || character == '\t' || character == '\r';
        if (inQuotes) {
            inQuotes = character != '"';
            bool const isEscape = character == '\\' && index + 1 < line.size();
            if (inQuotes) words.back() += isEscape ? line[++index] : character;
        } else if (isBlank) {
            inWord = wasQuoted = false;
        } else if (wasQuoted) {
            return std::nullopt;
        } else if (!inWord && character == '#') {
            break;
        } else {
            if (!inWord) words.emplace_back();
            if (!inWord && character == '"')
                inQuotes = wasQuoted = true;
            else
                words.back() += character;
            inWord = true;
        }
    }
    return inQuotes ? std::nullopt : std::optional(words);
}

std::optional<Words> split(std::string const& line) try { return splitWords(line); } catch (ScriptError const&) {
    return std::nullopt;
}

void checkNumber(Statement const& statement, std::size_t index) try {
    float const number = statement.number(index, -5.0f, 1000.0f);
    expect(number >= -5.0f && number <= 1000.0f, "a number lies within its bounds");
    int const whole = statement.integer(index, -5, 1000);
    expect(whole >= -5 && whole <= 1000 && whole == std::stoi(statement.words[index]), "a whole number is read");
} catch (ScriptError const&) {
}

void readStatements(std::string const& script) {
    std::istringstream stream(script);
    for (ScriptReader reader(stream);;)
        try {
            std::optional<Statement> const statement = reader.next();
            if (!statement) return;
            expect(!statement->words.empty() && statement->line == reader.line(), "a statement has a word and a place");
            for (std::size_t index = 1; index < statement->words.size(); ++index)
                checkNumber(*statement, index);
        } catch (ScriptError const&) {
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const script(textOf(data, size));
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        auto const words = split(line);
        expect(words == modelSplit(line), "lines are split at blanks outside quotation marks");
        expect(!words || split(quotedWords(*words)) == words, "quoted words stay as they are");
    }
    readStatements(script);
    return 0;
}
