#pragma once

#include "text/statement.h"

#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace compositor {

/// Splits a line at blanks. A word in quotation marks may contain blanks; inside them, `\"` stands for `"` and `\\` for `\`.
/// A `#` at the start of a word starts a comment.
/// @throws InputError for a quotation mark that is not closed, or not followed by a blank.
[[nodiscard]] std::vector<std::string> splitWords(std::string const& line);

/// Reads statements from a stream, one at a time. Skips a byte-order mark at the start of the stream.
class ScriptReader {
public:
    explicit ScriptReader(std::istream& stream) : _stream(stream) {}

    /// The next statement; nothing at the end of the stream. @throws InputError; the next call continues after that line.
    [[nodiscard]] std::optional<Statement> next();
    /// The number of the last line that was read.
    [[nodiscard]] int line() const { return _line; }

private:
    std::istream& _stream;
    int _line = 0;
};

} // namespace compositor
