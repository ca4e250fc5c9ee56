// Input: a script of the compositor; it is cut into words, and not run.
#include "script/script.h"
#include "tests/fuzz/fuzzing.h"

#include <regex>
#include <sstream>

namespace {

using namespace compositor;
using namespace KoFuzz;

using Words = std::vector<std::string>;

// None where the line cannot be read.
std::optional<Words> modelSplit(std::string const& line) {
    static std::regex const word(
        R"re([ \t\r]*(?:"((?:[^"\\]|\\[\s\S])*)"(?=[ \t\r]|$)|([^ \t\r"#][^ \t\r]*)))re", std::regex::optimize);
    static std::regex const rest(R"([ \t\r]*(?:#[\s\S]*)?)"), escape(R"(\\([\s\S]))");
    Words words;
    std::smatch found;
    auto next = line.begin();
    while (std::regex_search(next, line.end(), found, word, std::regex_constants::match_continuous)) {
        words.push_back(found[2].matched ? found.str(2) : std::regex_replace(found.str(1), escape, "$1"));
        next = found[0].second;
    }
    return std::regex_match(next, line.end(), rest) ? std::optional(words) : std::nullopt;
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
        expect(words == modelSplit(line), "lines are cut at blanks outside quotation marks");
        expect(!words || split(quotedWords(*words)) == words, "quoted words stay as they are");
    }
    readStatements(script);
    return 0;
}
