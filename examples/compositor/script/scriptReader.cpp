#include "script/scriptReader.h"

#include <algorithm>
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
    if (index == line.size()) throw InputError("a quotation mark is not closed");
    if (++index < line.size() && line.find_first_of(blanks, index) != index)
        throw InputError("after a closing quotation mark there must be a blank");
    return text;
}

} // namespace

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
