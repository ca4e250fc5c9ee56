#pragma once

#include "framework/actions/actRegistry.h"
#include "framework/actions/actShortcut.h"

#include <cstdint>
#include <string>

namespace Ko {

/// What an action needs besides its target.
enum class ActInputKind : std::uint8_t { None, Text, Number, Choice, Items, Other };

/// How a window shows an action.
struct ActPresentation {
    /// The name of an icon in the host's theme; empty for none.
    LiString iconName = {};
    /// A sentence about what the action does; empty for none.
    LiString toolTip = {};
    /// Entries of one section are shown together, the sections sorted by name, that without a name first.
    std::string section = {};
    /// The place in the section, smaller numbers first; the same number sorts by text.
    int order = 0;
    /// Whether the action switches something on and off, and is shown with a check mark.
    bool isCheckable = false;
    /// Whether the check mark is set now.
    bool isChecked = false;
    /// The default shortcuts, the first one for menus.
    Vector<ActShortcut> shortcuts = {};
    /// The part of the window in which the shortcuts are valid; empty for everywhere.
    std::string shortcutContext = {};
    /// Which input the user has to give.
    ActInputKind inputKind = ActInputKind::None;
    /// Why the action is not valid for the target and the input, for a disabled entry: "Select a layer first". Empty where it is valid,
    /// or no reason is known.
    LiString whyNot = {};
    /// Whether the check mark is set for some of several targets and not for the others (`ActGroupedEntry`); then it is shown as neither.
    bool isMixed = false;
};

/// An optional interface of actions: derive an action from it too, to decide how it is shown. Application thread only.
class KO_FRAMEWORK_API ActPresented {
public:
    /// How to show the action for a target and an input. Called often, for items of any kind, also where the action is not valid.
    virtual ActPresentation getPresentation(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const = 0;

    /// The presentation of any action; the default one where it has no `ActPresented`.
    [[nodiscard]] static ActPresentation of(
        ActAction const& action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input);

protected:
    ActPresented();
    ActPresented(ActPresented const&) = default;
    ActPresented& operator=(ActPresented const&) = default;
    virtual ~ActPresented();
};

/// The entries of a menu, arranged for a window.
struct ActSection {
    /// One entry with its presentation.
    struct Item {
        /// The entry, as in the answer.
        ActRegistry::Entry entry;
        /// How to show it.
        ActPresentation presentation;
    };

    /// The section's name.
    std::string name;
    /// By order, then as in the answer of the registry.
    Vector<Item> items;

    /// Arranges the answer of a query, which may lose actions that are unregistered meanwhile. Actions without `ActPresented` are in the section without a name, in the order of the answer.
    [[nodiscard]] static KO_FRAMEWORK_API Vector<ActSection> arrange(ConstIterator<ActRegistry::Entry> const& entries);
};

} // namespace Ko
