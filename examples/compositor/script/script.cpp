#include "script/script.h"

#include "text/number.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace compositor {

namespace {

constexpr char const* blanks = " \t\r";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// Reads the text between quotation marks. Moves `index` from the opening mark to the character after the closing one.
std::string readQuoted(std::string const& line, std::size_t& index) {
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
    auto const value = toNumber<Number>(text);
    if (value && *value >= minimum && *value <= maximum) return *value;
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

std::string quoted(std::string const& text) {
    return "\"" + text + "\"";
}

std::vector<std::string> splitWords(std::string const& line) {
    std::vector<std::string> words;
    for (std::size_t index = line.find_first_not_of(blanks); index < line.size();
         index = line.find_first_not_of(blanks, index)) {
        if (line[index] == '#') break;
        if (line[index] == '"') {
            words.push_back(readQuoted(line, index));
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
        if (++_line == 1 && text.starts_with(byteOrderMark)) text.erase(0, byteOrderMark.size());
        if (Statement statement{_line, splitWords(text)}; !statement.words.empty()) return statement;
    }
    return std::nullopt;
}

} // namespace compositor
