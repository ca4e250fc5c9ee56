#include "framework/actions/actShortcutMap.h"

#include "framework/actions/actAction.h"
#include "resmgt/osFile.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace Ko {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

LiString escaped(LiString const& name) {
    LiString text;
    for (std::size_t index = 0; index < name.size(); ++index) {
        char const character = name[index];
        bool const isAtEnd = index == 0 || index + 1 == name.size();
        bool const isSpecial =
            character == '\\' || character == '=' || character == '#' || (index == 0 && character == byteOrderMark[0]);
        if (isSpecial || (isBlank(character) && isAtEnd)) text += '\\';
        text += character == '\n' ? LiString("\\n") : LiString(1, character);
    }
    return text;
}

// Reads up to the sign that separates name and shortcuts, and leaves what follows it in `line`.
std::optional<LiString> takeName(std::string_view& line) {
    LiString name;
    std::size_t kept = 0; // blanks after it are not part of the name
    for (std::size_t index = 0; index < line.size(); ++index) {
        if (line[index] == '=') {
            line.remove_prefix(index + 1);
            name.resize(kept);
            return name;
        }
        bool const isEscaped = line[index] == '\\' && index + 1 < line.size();
        if (isEscaped) ++index;
        if (!isEscaped && isBlank(line[index]) && name.empty()) continue;
        name += isEscaped && line[index] == 'n' ? '\n' : line[index];
        if (isEscaped || !isBlank(line[index])) kept = name.size();
    }
    return std::nullopt;
}

bool isComment(std::string_view line) {
    auto const first = std::find_if_not(line.begin(), line.end(), isBlank);
    return first == line.end() || *first == '#';
}

} // namespace

LiString ActShortcutMap::getName(ActAction const& action) {
    std::string const composite = action.getCompositeName();
    return composite.empty() ? action.getDescription() : composite + "/" + action.getDescription();
}

void ActShortcutMap::setDefaults(LiString const& name, Vector<ActShortcut> shortcuts, std::string const& context) {
    _defaults.insert_or_assign(name, Defaults{std::move(shortcuts), context});
}

void ActShortcutMap::remove(LiString const& name) {
    _defaults.erase(name);
}

void ActShortcutMap::change(LiString const& name, Vector<ActShortcut> shortcuts) {
    _changes.insert_or_assign(name, std::move(shortcuts));
}

void ActShortcutMap::reset(LiString const& name) {
    _changes.erase(name);
}

Vector<ActShortcut> const& ActShortcutMap::shortcutsOf(LiString const& name, Defaults const& defaults) const {
    auto const changed = _changes.find(name);
    return changed == _changes.end() ? defaults.shortcuts : changed->second;
}

Vector<ActShortcut> ActShortcutMap::getShortcuts(LiString const& name) const {
    auto const found = _defaults.find(name);
    return shortcutsOf(name, found == _defaults.end() ? Defaults() : found->second);
}

std::string ActShortcutMap::getContext(LiString const& name) const {
    auto const found = _defaults.find(name);
    return found == _defaults.end() ? std::string() : found->second.context;
}

Vector<LiString> ActShortcutMap::find(ActShortcut const& shortcut, std::string const& context) const {
    Vector<LiString> ofContext;
    Vector<LiString> everywhere;
    for (auto const& [name, defaults] : _defaults) {
        if (defaults.context != context && !defaults.context.empty()) continue;
        Vector<ActShortcut> const& shortcuts = shortcutsOf(name, defaults);
        if (std::find(shortcuts.begin(), shortcuts.end(), shortcut) != shortcuts.end())
            (defaults.context.empty() ? everywhere : ofContext).push_back(name);
    }
    return ofContext.empty() ? everywhere : ofContext;
}

Vector<ActShortcutMap::Conflict> ActShortcutMap::getConflicts() const {
    std::map<std::pair<std::string, ActShortcut>, Set<LiString>> users;
    for (auto const& [name, defaults] : _defaults)
        for (ActShortcut const& shortcut : shortcutsOf(name, defaults))
            users[{defaults.context, shortcut}].insert(name);
    Vector<Conflict> conflicts;
    for (auto const& [where, names] : users)
        if (names.size() > 1) conflicts.push_back({where.second, where.first, {names.begin(), names.end()}});
    return conflicts;
}

Vector<LiString> ActShortcutMap::setText(LiString const& text, LiString const& origin) {
    std::map<LiString, Vector<ActShortcut>> changes;
    Vector<LiString> unreadable;
    Vector<LiString> problems;
    std::string_view rest = text;
    for (int number = 1; !rest.empty(); ++number) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        // Any line may become the first one when the text is written again.
        while (line.starts_with(byteOrderMark))
            line.remove_prefix(byteOrderMark.size());
        if (isComment(line)) continue;
        try {
            std::string_view shortcuts = line;
            std::optional<LiString> const name = takeName(shortcuts);
            if (!name) throw ActShortcutEx("", 0, LiString(line), "an equals sign is missing after the name");
            while (!shortcuts.empty() && isBlank(shortcuts.back()))
                shortcuts.remove_suffix(1);
            changes.insert_or_assign(*name, ActShortcut::parseList(LiString(shortcuts)));
        } catch (ActShortcutEx const& error) {
            problems.push_back(origin + ":" + std::to_string(number) + ": " + error.getReason());
            unreadable.emplace_back(line);
        }
    }
    _changes = std::move(changes);
    _unreadable = std::move(unreadable);
    return problems;
}

LiString ActShortcutMap::getText() const {
    LiString text;
    for (auto const& [name, shortcuts] : _changes)
        text += escaped(name) + " = " + ActShortcut::getText(shortcuts) + "\n";
    for (LiString const& line : _unreadable)
        text += line + "\n";
    return text;
}

Vector<LiString> ActShortcutMap::load(OsFilePath const& path) {
    return setText(OsFile::getInfo(path) ? OsFile::read(path) : LiString(), path.getPath());
}

void ActShortcutMap::save(OsFilePath const& path) const {
    OsFile::replace(path, getText());
}

} // namespace Ko
