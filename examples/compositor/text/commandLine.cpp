#include "text/commandLine.h"

#include <algorithm>

namespace compositor {

namespace {

// Puts `before` and `after` around each of the characters.
std::string escaped(
    std::string_view text, std::string_view characters, std::string_view before, std::string_view after) {
    std::string result;
    for (char const character : text) {
        bool const isSpecial = characters.find(character) != characters.npos;
        if (isSpecial) result += before;
        result += character;
        if (isSpecial) result += after;
    }
    return result;
}

std::string inSingleQuotes(std::string_view text) {
    return escaped(text, "'", "'\\", "'");
}

std::string inDoubleQuotes(std::string_view text) {
    return escaped(text, "\\\"$`", "\\", "");
}

std::string asWord(std::string_view text) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+=:,@";
    bool const isPlain = !text.empty() && text.find_first_not_of(plain) == text.npos;
    return isPlain ? std::string(text) : "'" + inSingleQuotes(text) + "'";
}

/// Copies a command line from start to end.
class Filler {
public:
    Filler(std::string_view commandLine, std::vector<Placeholder> const& placeholders)
        : _rest(commandLine), _placeholders(placeholders) {}

    std::string fillIn() {
        while (!_rest.empty())
            if (!fillInQuoted() && !fillInPlain()) copyOne();
        return std::move(_text);
    }

private:
    // Quoted text that is only a placeholder, as in '%f', is no text for a shell.
    bool fillInQuoted() {
        char const first = _rest.front();
        if (_quote != '\0' || (first != '\'' && first != '"')) return false;
        Placeholder const* const found = at(1);
        if (!found || _rest.substr(1 + found->name.size()).find(first) != 0) return false;
        _text += asWord(found->value);
        _rest.remove_prefix(found->name.size() + 2);
        return true;
    }
    bool fillInPlain() {
        Placeholder const* const found = at(0);
        if (!found) return false;
        std::string const word = asWord(found->value);
        _text += _quote == '\'' ? inSingleQuotes(word) : _quote == '"' ? inDoubleQuotes(word) : word;
        _rest.remove_prefix(found->name.size());
        return true;
    }
    void copyOne() {
        char const first = _rest.front();
        bool const isEscape = first == '\\' && _quote != '\'' && _rest.size() > 1;
        if (first == _quote)
            _quote = '\0';
        else if (_quote == '\0' && (first == '\'' || first == '"'))
            _quote = first;
        std::size_t const count = isEscape ? 2 : 1;
        _text += _rest.substr(0, count);
        _rest.remove_prefix(count);
    }
    // The placeholder at a place of the rest, or null.
    Placeholder const* at(std::size_t place) const {
        auto const found = std::ranges::find_if(_placeholders,
            [&](Placeholder const& placeholder) { return _rest.substr(place).starts_with(placeholder.name); });
        return found == _placeholders.end() ? nullptr : &*found;
    }

    std::string_view _rest;
    std::vector<Placeholder> const& _placeholders;
    std::string _text;
    char _quote = '\0';
};

} // namespace

std::string fillIn(std::string_view commandLine, std::vector<Placeholder> const& placeholders) {
    return Filler(commandLine, placeholders).fillIn();
}

} // namespace compositor
