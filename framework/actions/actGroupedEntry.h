#pragma once

#include "framework/actions/actOption.h"
#include "framework/actions/actPresentation.h"
#include "framework/command/cmCommandStack.h"

#include <cstddef>
#include <string>

namespace Ko {

/// An action with all the targets that it was found valid for: one entry of a menu for several selected items. It does not own the
/// action, and must not be used after the action was destroyed. Application thread only.
///
///     for (auto const& entry : ActRegistry::getInstance().getGroupedActions(selection, none, "", ActRegistry::AllSorted))
///         menu.add(entry.getDescription(), entry.getPresentation());
class KO_FRAMEWORK_API ActGroupedEntry {
public:
    /// A target or an input.
    using Item = RCShdPtr<SnItem const>;

    /// @param action is not owned; it is valid for each of the targets and the input.
    /// @param targets at least one.
    ActGroupedEntry(ActAction const* action, Vector<Item> targets, Item input);

    /// The action, not owned.
    [[nodiscard]] ActAction const* getAction() const noexcept { return _action; }
    /// The targets that the action was found valid for, in the order of the query.
    [[nodiscard]] Vector<Item> const& getTargets() const noexcept { return _targets; }
    /// The input that the action was found valid for.
    [[nodiscard]] Item const& getInput() const noexcept { return _input; }

    /// The present description of the action.
    [[nodiscard]] LiString getDescription() const;
    /// The text to show: the display string of the action, or its description where that is empty.
    [[nodiscard]] LiString getText() const;
    /// How to show the action: as for the first target; checked where it is so for all targets, mixed where it is so for some.
    [[nodiscard]] ActPresentation getPresentation() const;
    /// The choices that all targets offer, in the order of the first target; current where they are so for all targets.
    [[nodiscard]] Vector<ActOption> getOptions() const;
    /// The entries of the sub-menu of a composite action: its members that are valid for some of the targets. Empty for another action.
    [[nodiscard]] Vector<ActGroupedEntry> getMembers(ActRegistry::Numerator order) const;

    /// Performs the action on its targets, in order, as one undo step with the text of the action. When it throws, the step is taken
    /// back. After the first target, those for which the action has become invalid are left out.
    ///
    /// An action with a check mark is performed only on the targets that are off, if there are any: then it is on for all.
    /// @param history logs the step, unless a guard with a history is open.
    /// @returns the number of targets on which it was performed.
    std::size_t performAction(RCShdPtr<CmCommandStack> const& history, RCShdPtr<SnSelection> const& selection) const;
    /// Performs the action with another input, such as that of an option, on the targets for which it is valid with that.
    std::size_t performAction(
        RCShdPtr<CmCommandStack> const& history, Item const& input, RCShdPtr<SnSelection> const& selection) const;

private:
    class Step;

    ActAction const* _action;
    Vector<Item> _targets;
    Item _input;
};

/// The grouped entries of a menu, arranged for a window as `ActSection` does it.
struct ActGroupedSection {
    /// One entry with its presentation.
    struct Item {
        /// The entry, as in the answer.
        ActGroupedEntry entry;
        /// How to show it.
        ActPresentation presentation;
    };

    /// The section's name.
    std::string name;
    /// By order, then as in the answer of the registry.
    Vector<Item> items;

    /// Arranges the answer of a query, which may lose actions that are unregistered meanwhile.
    [[nodiscard]] static KO_FRAMEWORK_API Vector<ActGroupedSection> arrange(Vector<ActGroupedEntry> const& entries);
};

} // namespace Ko
