#pragma once

#include "framework/actions/actShortcut.h"
#include "resmgt/osFilePath.h"

#include <map>
#include <string>

namespace Ko {

class ActAction;

/// Which shortcuts perform which actions: the defaults of their authors, and the changes of a user, which are kept in a file.
///
/// An action is known by its name. A context is a part of the window, such as "canvas": while it has the focus, its shortcuts come
/// before those that are valid everywhere. Changes of actions that have no defaults are kept, for a plug-in that is loaded later. A value;
/// one thread at a time.
///
///     ActShortcutMap shortcuts;
///     shortcuts.setDefaults("Layers/Rename Layer", ActShortcut::parseList("F2, Ctrl+R"), "layers");
///     shortcuts.load(file);
///     for (LiString const& name : shortcuts.find(pressed, "layers")) perform(name);
class KO_FRAMEWORK_API ActShortcutMap {
public:
    /// Actions that have the same shortcut in the same context.
    struct Conflict {
        /// What they have in common.
        ActShortcut shortcut;
        /// Empty for everywhere.
        std::string context;
        /// The names of the actions, sorted.
        Vector<LiString> actions;
    };

    /// "Composite name/Description", or the description where there is no composite.
    [[nodiscard]] static LiString getName(ActAction const& action);

    /// Sets the shortcuts that an action has unless the user changes them.
    /// @param context where they are valid; empty for everywhere.
    void setDefaults(LiString const& name, Vector<ActShortcut> shortcuts, std::string const& context = {});
    /// Removes an action with its defaults. A user's change of it stays.
    void remove(LiString const& name);

    /// Sets the user's shortcuts of an action; none turn its defaults off.
    void change(LiString const& name, Vector<ActShortcut> shortcuts);
    /// Takes the user's change of an action back.
    void reset(LiString const& name);
    /// Whether the user has changed the shortcuts of an action.
    [[nodiscard]] bool isChanged(LiString const& name) const { return _changes.contains(name); }

    /// The shortcuts of an action, the first one for menus: the user's, or else the defaults.
    [[nodiscard]] Vector<ActShortcut> getShortcuts(LiString const& name) const;
    /// The context of an action; empty for everywhere.
    [[nodiscard]] std::string getContext(LiString const& name) const;
    /// The names of the actions that a shortcut performs in a context, sorted: those of the context, or else those that are valid
    /// everywhere. More than one is a conflict.
    [[nodiscard]] Vector<LiString> find(ActShortcut const& shortcut, std::string const& context = {}) const;
    /// All conflicts, sorted by context and shortcut. An action of a context does not conflict with one that is valid everywhere.
    [[nodiscard]] Vector<Conflict> getConflicts() const;

    /// Replaces the user's changes by those of a text: one `name = shortcuts` a line, `#` before comments. In a name, a backslash goes
    /// before `\`, `=`, `#` and blanks at its ends. Of an action given twice, the last line counts.
    /// @param origin names the text in the problems.
    /// @returns a message for each line that cannot be read, with its number. Such lines stay in `getText()`.
    Vector<LiString> setText(LiString const& text, LiString const& origin);
    /// The user's changes as a text that `setText` reads, sorted by name.
    [[nodiscard]] LiString getText() const;

    /// Reads the user's changes from a file, as `setText`. Without a file there are no changes.
    /// @returns as `setText`.
    /// @throws OsFileEx::ExInvalidPath when the file cannot be read; the changes stay as they are.
    Vector<LiString> load(OsFilePath const& path);
    /// Replaces the file as a whole, or leaves it as it is.
    /// @throws OsFileEx::ExInvalidPath when it cannot be written.
    void save(OsFilePath const& path) const;

private:
    struct Defaults {
        Vector<ActShortcut> shortcuts;
        std::string context;
    };

    Vector<ActShortcut> const& shortcutsOf(LiString const& name, Defaults const& defaults) const;

    std::map<LiString, Defaults> _defaults;
    std::map<LiString, Vector<ActShortcut>> _changes;
    Vector<LiString> _unreadable;
};

} // namespace Ko
