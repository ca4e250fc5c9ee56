#include "framework/actions/actShortcut.h"

#include "framework/actions/src/actText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace Ko {

namespace {

constexpr char const* source = "framework\\actions\\src\\actShortcut";

struct ModifierName {
    char const* name; // in small letters
    ActShortcut::Modifier modifier;
};

constexpr std::array<ModifierName, 11> modifierNames{{{"ctrl", ActShortcut::Ctrl}, {"control", ActShortcut::Ctrl},
    {"alt", ActShortcut::Alt}, {"option", ActShortcut::Alt}, {"shift", ActShortcut::Shift}, {"meta", ActShortcut::Meta},
    {"cmd", ActShortcut::Meta}, {"command", ActShortcut::Meta}, {"super", ActShortcut::Meta},
    {"win", ActShortcut::Meta}, {"windows", ActShortcut::Meta}}};

struct WrittenModifier {
    ActShortcut::Modifier modifier;
    char const* word;
    char const* symbol;
};

constexpr std::array<WrittenModifier, 4> writtenModifiers{
    {{ActShortcut::Ctrl, "Ctrl", "\u2318"}, {ActShortcut::Alt, "Alt", "\u2325"},
        {ActShortcut::Shift, "Shift", "\u21E7"}, {ActShortcut::Meta, "Meta", "\u2303"}}};

struct KeyName {
    char const* name; // in small letters
    char const* key;
    char const* symbol = nullptr;
};

// The first name of each key is the one that is written.
constexpr std::array<KeyName, 33> keyNames{{{"escape", "Escape", "\u238B"}, {"esc", "Escape"}, {"tab", "Tab", "\u21E5"},
    {"backspace", "Backspace", "\u232B"}, {"return", "Return", "\u21A9"}, {"enter", "Enter", "\u2324"},
    {"insert", "Insert"}, {"ins", "Insert"}, {"delete", "Delete", "\u2326"}, {"del", "Delete"},
    {"home", "Home", "\u2196"}, {"end", "End", "\u2198"}, {"pageup", "PageUp", "\u21DE"}, {"pgup", "PageUp"},
    {"pagedown", "PageDown", "\u21DF"}, {"pgdown", "PageDown"}, {"pgdn", "PageDown"}, {"left", "Left", "\u2190"},
    {"right", "Right", "\u2192"}, {"up", "Up", "\u2191"}, {"down", "Down", "\u2193"}, {"space", "Space", "\u2423"},
    {" ", "Space"}, {"plus", "Plus", "+"}, {"+", "Plus"}, {"comma", "Comma", ","}, {",", "Comma"}, {"print", "Print"},
    {"prtsc", "Print"}, {"pause", "Pause"}, {"break", "Pause"}, {"menu", "Menu"}, {"help", "Help"}}};

std::string_view trimmed(std::string_view text) {
    auto const first = text.find_first_not_of(" \t");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

LiString inSmallLetters(std::string_view text) {
    LiString result(text);
    for (char& character : result)
        character = static_cast<char>(character >= 'A' && character <= 'Z' ? character + 32 : character);
    return result;
}

std::optional<LiString> functionKey(std::string_view lower) {
    if (lower.size() < 2 || lower.size() > 3 || lower[0] != 'f' || lower[1] == '0') return std::nullopt;
    int number = 0;
    for (char const digit : lower.substr(1)) {
        if (digit < '0' || digit > '9') return std::nullopt;
        number = 10 * number + (digit - '0');
    }
    if (number > 35) return std::nullopt;
    return "F" + std::to_string(number);
}

bool isVisible(char32_t character) noexcept {
    return character > ' ' && character != 0x7F && !(character >= 0x80 && character <= 0xA0) &&
           character != ActText::invalid;
}

std::optional<LiString> keyOf(std::string_view text) {
    LiString const lower = inSmallLetters(text);
    for (KeyName const& known : keyNames)
        if (lower == known.name) return known.key;
    if (std::optional<LiString> key = functionKey(lower)) return key;
    ActText reader(text);
    if (reader.isAtEnd() || !isVisible(reader.next()) || !reader.isAtEnd()) return std::nullopt;
    char const letter = text[0];
    return letter >= 'a' && letter <= 'z' ? LiString(1, static_cast<char>(letter - 32)) : LiString(text);
}

std::optional<ActShortcut::Modifier> modifierOf(std::string_view text) {
    LiString const lower = inSmallLetters(text);
    for (ModifierName const& known : modifierNames)
        if (lower == known.name) return known.modifier;
    return std::nullopt;
}

} // namespace

ActShortcutEx::ActShortcutEx(char const* file, int line, LiString const& text, LiString const& problem)
    : ExBase(file, line, "\"" + text + "\" is no shortcut: " + problem + ".") {}
ExBase* ActShortcutEx::clone() const {
    return copyOf(*this);
}
void ActShortcutEx::raise() const {
    throw *this;
}

ActShortcut ActShortcut::parse(LiString const& shortcutText) {
    ActShortcut shortcut;
    std::string_view rest = trimmed(shortcutText);
    if (rest.empty()) return shortcut;
    LiString const text(rest);
    // A plus at the beginning of the rest is the key itself.
    for (auto plus = rest.find('+', 1); plus != rest.npos && rest.size() > 1; plus = rest.find('+', 1)) {
        std::string_view const name = trimmed(rest.substr(0, plus));
        std::optional<Modifier> const modifier = modifierOf(name);
        if (!modifier) throw ActShortcutEx(source, __LINE__, text, "there is no modifier \"" + LiString(name) + "\"");
        if (shortcut._modifiers & *modifier)
            throw ActShortcutEx(source, __LINE__, text, "it has \"" + LiString(name) + "\" twice");
        shortcut._modifiers |= *modifier;
        rest = trimmed(rest.substr(plus + 1));
        if (rest.empty()) throw ActShortcutEx(source, __LINE__, text, "the key is missing");
    }
    std::optional<LiString> key = keyOf(rest);
    if (!key && modifierOf(rest)) throw ActShortcutEx(source, __LINE__, text, "the key is missing");
    if (!key) throw ActShortcutEx(source, __LINE__, text, "there is no key \"" + LiString(rest) + "\"");
    shortcut._key = std::move(*key);
    return shortcut;
}

Vector<ActShortcut> ActShortcut::parseList(LiString const& text) {
    Vector<ActShortcut> shortcuts;
    for (std::size_t begin = 0; begin <= text.size();) {
        auto comma = text.find(',', begin);
        while (comma != text.npos && comma > begin && text[comma - 1] == '+') // the comma is the key
            comma = text.find(',', comma + 1);
        auto const end = std::min(comma, text.size());
        ActShortcut shortcut = parse(text.substr(begin, end - begin));
        if (!shortcut.isNone()) shortcuts.push_back(std::move(shortcut));
        begin = end + 1;
    }
    return shortcuts;
}

LiString ActShortcut::getText() const {
    LiString text;
    for (WrittenModifier const& written : writtenModifiers)
        if (_modifiers & written.modifier) text += LiString(written.word) + "+";
    return text + _key;
}

LiString ActShortcut::getText(Vector<ActShortcut> const& shortcuts) {
    LiString text;
    for (ActShortcut const& shortcut : shortcuts)
        text += (text.empty() ? "" : ", ") + shortcut.getText();
    return text;
}

LiString ActShortcut::getDisplayText(Keyboard keyboard) const {
    if (keyboard == Keyboard::Words) return getText();
    LiString text;
    for (Modifier const modifier : {Meta, Alt, Shift, Ctrl})
        for (WrittenModifier const& written : writtenModifiers)
            if (written.modifier == modifier && (_modifiers & modifier)) text += written.symbol;
    for (KeyName const& known : keyNames)
        if (_key == known.key && known.symbol) return text + known.symbol;
    return text + _key;
}

} // namespace Ko
