#pragma once

#include "framework/dragAndDrop/drCarrier.h"

namespace Ko {

/// What handles a drop with the actions that are registered. Application thread only.
class KO_FRAMEWORK_API ActDndUtils {
public:
    /// Items in the order in which they are carried, or asked for.
    using Items = List<RCShdPtr<SnItem const>>;

    /// Appends the items that are carried, in their order.
    /// @returns their number; 0 also for a carrier without a selection.
    static int getSnItems(DrCarrier const& carrier, Items* items);

    /// Performs the earliest registered action on the top level that takes the carrier on one of the targets, with the
    /// first target that it takes it on. The action's input is a `DrCarrierItem`.
    /// @param perform when false, nothing is performed: it is only asked whether there is one.
    /// @returns whether there is one.
    static bool performCarrierActions(
        Items const& targets, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const& selection, bool perform);
    static bool performCarrierActions(RCShdPtr<SnSelection const> const& targets, RCShdPtr<DrCarrier> const& carrier,
        RCShdPtr<SnSelection> const& selection, bool perform);
};

} // namespace Ko
