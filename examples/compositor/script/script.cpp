#include "script/script.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace compositor {

namespace {

constexpr char const* blanks = " \t\r";

// The text between quotation marks; `index` goes from the first to behind the second.
std::string quoted(std::string const& line, std::size_t& index) {
    std::string text;
    for (++index; index < line.size() && line[index] != '"'; ++index) {
        if (line[index] == '\\' && index + 1 < line.size()) ++index;
        text += line[index];
    }
    if (index == line.size()) throw ScriptError("a quotation mark is not closed");
    if (++index < line.size() && line.find_first_of(blanks, index) != index)
        throw ScriptError("after a closing quotation mark there must be a blank");
    return text;
}

template <class Number>
Number parse(std::string const& text, Number minimum, Number maximum, char const* kind) {
    Number value{};
    auto const [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isNumber = error == std::errc() && rest == text.data() + text.size();
    if (isNumber && value >= minimum && value <= maximum) return value;
    std::ostringstream message;
    message << '"' << text << "\" is not a " << kind << " from " << minimum << " to " << maximum;
    throw ScriptError(message.str());
}

} // namespace

int Statement::integer(std::size_t index, int minimum, int maximum) const {
    return parse(words[index], minimum, maximum, "whole number");
}

float Statement::number(std::size_t index, float minimum, float maximum) const {
    return parse(words[index], minimum, maximum, "number");
}

std::vector<std::string> splitWords(std::string const& line) {
    std::vector<std::string> words;
    for (std::size_t index = line.find_first_not_of(blanks); index < line.size();
         index = line.find_first_not_of(blanks, index)) {
        if (line[index] == '#') break;
        if (line[index] == '"') {
            words.push_back(quoted(line, index));
            continue;
        }
        std::size_t const end = std::min(line.find_first_of(blanks, index), line.size());
        words.push_back(line.substr(index, end - index));
        index = end;
    }
    return words;
}

std::optional<Statement> ScriptReader::next() {
    for (std::string text; std::getline(_stream, text);) {
        ++_line;
        if (Statement statement{_line, splitWords(text)}; !statement.words.empty()) return statement;
    }
    return std::nullopt;
}

} // namespace compositor
