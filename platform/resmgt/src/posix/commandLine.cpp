#include "resmgt/src/posix/commandLine.h"

#include <string_view>

namespace Ko {

namespace {

constexpr std::string_view blanks = " \t\n\r\f\v";

// Reads one command line from start to end.
class Splitter {
public:
    explicit Splitter(std::string_view text) : _rest(text) {}

    bool splitInto(Vector<LiString>& words) {
        while (skipBlanks())
            if (!readWord(words.emplace_back())) return false;
        return true;
    }

private:
    // A line continuation starts no word.
    bool skipBlanks() {
        for (;;) {
            _rest.remove_prefix(std::min(_rest.find_first_not_of(blanks), _rest.size()));
            if (!_rest.starts_with("\\\n")) return !_rest.empty();
            _rest.remove_prefix(2);
        }
    }

    bool readWord(LiString& word) {
        while (!_rest.empty() && blanks.find(_rest.front()) == std::string_view::npos)
            if (!readPiece(word)) return false;
        return true;
    }

    bool readPiece(LiString& word) {
        switch (char const first = take()) {
        case '\'':
            return readSingleQuoted(word);
        case '"':
            return readDoubleQuoted(word);
        case '\\':
            return readEscaped(word);
        default:
            word += first;
            return true;
        }
    }

    bool readSingleQuoted(LiString& word) {
        auto const end = _rest.find('\'');
        if (end == std::string_view::npos) return false;
        word += _rest.substr(0, end);
        _rest.remove_prefix(end + 1);
        return true;
    }

    // In double quotes a backslash is kept unless the next character has a special meaning there.
    bool readDoubleQuoted(LiString& word) {
        while (!_rest.empty()) {
            char const next = take();
            if (next == '"') return true;
            bool const escapes = next == '\\' && !_rest.empty() &&
                                 std::string_view("$`\"\\\n").find(_rest.front()) != std::string_view::npos;
            if (!escapes)
                word += next;
            else
                readEscaped(word);
        }
        return false;
    }

    // A backslash at the end of a line continues it on the next line.
    bool readEscaped(LiString& word) {
        if (_rest.empty()) return false;
        if (char const next = take(); next != '\n') word += next;
        return true;
    }

    char take() {
        char const first = _rest.front();
        _rest.remove_prefix(1);
        return first;
    }

    std::string_view _rest;
};

} // namespace

bool splitCommandLine(LiString const& commandLine, Vector<LiString>& words) {
    return commandLine.find('\0') == LiString::npos && Splitter(commandLine).splitInto(words);
}

} // namespace Ko
