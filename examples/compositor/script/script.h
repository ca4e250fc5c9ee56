#pragma once

#include <istream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace compositor {

/// What is wrong in a script, in words for a person, without the place.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One line of a script: a word and its arguments.
struct Statement {
    int line = 0;
    std::vector<std::string> words;

    std::string const& word() const { return words.front(); }
    std::size_t arguments() const { return words.size() - 1; }
    /// @throws ScriptError when the argument is not a whole number, or a number, in the range.
    int integer(std::size_t index, int minimum, int maximum) const;
    float number(std::size_t index, float minimum, float maximum) const;
};

/// Splits a line at blanks. Quotation marks keep blanks together, `\"` and `\\` stand for themselves inside them, and `#`
/// at the begin of a word starts a comment. @throws ScriptError
std::vector<std::string> splitWords(std::string const& line);

/// Reads statements from a stream, one at a time. Skips a byte-order mark at the begin.
class ScriptReader {
public:
    explicit ScriptReader(std::istream& stream) : _stream(stream) {}

    /// The next statement; none at the end of the stream. @throws ScriptError; the line is then passed over.
    std::optional<Statement> next();
    int line() const { return _line; }

private:
    std::istream& _stream;
    int _line = 0;
};

} // namespace compositor
