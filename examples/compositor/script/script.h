#pragma once

#include <istream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace compositor {

/// A fault in a script. The message is for users and does not contain the line.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One line of a script: a word and its arguments. Also the input of an action: its description and arguments.
struct Statement {
    int line = 0;
    std::vector<std::string> words;

    bool operator==(Statement const&) const = default;

    [[nodiscard]] std::string const& word() const { return words.front(); }
    [[nodiscard]] std::size_t arguments() const { return words.size() - 1; }
    /// An argument, counted from 1, as a whole number.
    /// @throws ScriptError when it is none, or outside the range; `number` likewise.
    [[nodiscard]] int integer(std::size_t index, int minimum, int maximum) const;
    [[nodiscard]] float number(std::size_t index, float minimum, float maximum) const;
};

/// The text in quotation marks, for messages.
[[nodiscard]] std::string quoted(std::string const& text);

/// Splits a line at blanks. A word in quotation marks may contain blanks; inside them, `\"` stands for `"` and `\\` for `\`.
/// A `#` at the start of a word starts a comment.
/// @throws ScriptError for a quotation mark that is not closed, or not followed by a blank.
[[nodiscard]] std::vector<std::string> splitWords(std::string const& line);

/// Reads statements from a stream, one at a time. Skips a byte-order mark at the start of the stream.
class ScriptReader {
public:
    explicit ScriptReader(std::istream& stream) : _stream(stream) {}

    /// The next statement; nothing at the end of the stream. @throws ScriptError; the next call continues after that line.
    [[nodiscard]] std::optional<Statement> next();
    /// The number of the last line that was read.
    [[nodiscard]] int line() const { return _line; }

private:
    std::istream& _stream;
    int _line = 0;
};

} // namespace compositor
