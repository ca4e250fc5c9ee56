#pragma once

#include "framework/actions/actRegistry.h"
#include "primitives/gePoint2.h"

namespace Ko {

/// Base of the context menus that show what can be done with the selected items. The menu of an application's user
/// interface derives from it. Application thread only.
class KO_FRAMEWORK_API ActMenuBase : public RCBase {
public:
    /// The items that are selected, and what a menu shows for them:
    using Items = List<RCShdPtr<SnItem const>>;
    using Entries = ConstIterator<ActRegistry::Entry>;

    ~ActMenuBase() override;

    /// Shows the actions on the top level that are valid for the items with no input, sorted by description, an entry for
    /// each item that an action is valid for.
    /// @param position on the screen, in pixels.
    /// @param selection for what the performed action selects.
    /// @returns whether a menu was set up.
    virtual bool setActionsForSelection(
        Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection);
    /// The same; `entries` becomes what is shown, whether or not a menu is set up.
    virtual bool setActionsForSelection(
        Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection, Entries& entries);

protected:
    ActMenuBase();

    /// Sets up the menu.
    /// @returns whether it did; a menu without entries may be none.
    virtual bool showMenu(Entries entries, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) = 0;

    /// For a composite action's sub-menu, to be called when it opens: its members that are valid for the entry's target
    /// and input, sorted by description. Nothing for the entry of another action.
    static Entries getMembers(ActRegistry::Entry const& composite);
};

} // namespace Ko
