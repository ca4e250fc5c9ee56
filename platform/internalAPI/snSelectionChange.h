#pragma once

#include "internalAPI/cbChanges.h"
#include "internalAPI/snItem.h"

namespace Ko {

/// What one operation has changed about a selection: a list that removes the removed items and then appends the added ones has the
/// content and the order of the selection again. An item that only changes its place is removed and added.
struct SnSelectionChange {
    /// Items that were removed.
    Vector<RCShdPtr<SnItem const>> removed = {};
    /// Items that were added at the end, in their order.
    Vector<RCShdPtr<SnItem const>> added = {};
    /// Whether memory was too short to find out what has changed: read the selection again.
    bool isUnknown = false;
};

extern template class KO_INTERNALAPI_API CbDispatcher<SnSelectionChange>;
extern template class KO_INTERNALAPI_API CbChanges<SnSelectionChange>;

} // namespace Ko
