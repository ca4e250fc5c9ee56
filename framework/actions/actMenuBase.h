#pragma once

#include "framework/actions/actRegistry.h"
#include "primitives/gePoint2.h"

namespace Ko {

/// Base of the context menus for selected items, which show the actions that are valid for them. The menu of an
/// application's user interface derives from it. Application thread only.
class KO_FRAMEWORK_API ActMenuBase : public RCBase {
public:
    /// The selected items.
    using Items = List<RCShdPtr<SnItem const>>;
    /// The entries of a menu.
    using Entries = ConstIterator<ActRegistry::Entry>;

    ~ActMenuBase() override;

    /// Shows the top-level actions that are valid for the items without an input, sorted by description, with one entry for
    /// each pair of an action and an item that it is valid for.
    /// @param position on the screen, in pixels.
    /// @param selection receives the items that the performed action adds.
    /// @returns whether a menu was set up.
    virtual bool setActionsForSelection(
        Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection);
    /// The same, and returns the entries to be shown in `entries`, whether or not a menu is set up.
    virtual bool setActionsForSelection(
        Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection, Entries& entries);

protected:
    ActMenuBase();

    /// Sets up the menu.
    /// @returns whether a menu was set up; a menu without entries need not be.
    virtual bool showMenu(Entries entries, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) = 0;

    /// The entries of a composite action's sub-menu: its members that are valid for the entry's target and input, sorted by
    /// description. To be called when the sub-menu opens. Empty for an action that is no `ActCompositeAction`.
    [[nodiscard]] static Entries getMembers(ActRegistry::Entry const& composite);
};

} // namespace Ko
