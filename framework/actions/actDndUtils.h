#pragma once

#include "framework/dragAndDrop/drCarrier.h"

namespace Ko {

/// Performs drops by the registered actions. Application thread only.
class KO_FRAMEWORK_API ActDndUtils {
public:
    /// Carried items or targets, in order.
    using Items = List<RCShdPtr<SnItem const>>;

    /// Appends the items that the carrier carries, in their order.
    /// @returns the number of items; 0 also for a carrier without a selection.
    static int getSnItems(DrCarrier const& carrier, Items* items);

    /// Performs the earliest registered top-level action that is valid for one of the targets and the carrier, on the first
    /// such target. The action's input is a `DrCarrierItem`. Stops asking at the first match.
    /// @param perform false to find out only whether there is such an action.
    /// @returns whether there is such an action.
    static bool performCarrierActions(
        Items const& targets, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const& selection, bool perform);
    /// The same for the items of a selection as targets.
    static bool performCarrierActions(RCShdPtr<SnSelection const> const& targets, RCShdPtr<DrCarrier> const& carrier,
        RCShdPtr<SnSelection> const& selection, bool perform);
};

} // namespace Ko
