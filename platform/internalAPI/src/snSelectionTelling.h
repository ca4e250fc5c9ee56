#pragma once

#include "internalAPI/snSelection.h"

namespace Ko {

/// Finds out what an operation will change about a selection that is watched, and tells it afterwards. When memory runs out, nothing
/// has changed yet. Removed items live until the change was told.
class SnSelection::Telling {
public:
    explicit Telling(SnSelection& selection) : _selection(&selection), _one(1) {}

    Telling& add(RCShdPtr<SnItem const> const& item);
    Telling& remove(RCShdPtr<SnItem const> const& item);
    Telling& toggle(RCShdPtr<SnItem const> const& item);
    template <auto operation>
    Telling& forEach(SnSelection const& items) {
        for (auto const& item : itemsOf(items))
            (this->*operation)(item);
        return *this;
    }
    Telling& replace(SnSelection const& items);
    Telling& clear();

    /// The same for one item in a call. Not inlined, so that selections without listeners pay for one comparison only.
    template <auto find, class Operation>
    [[gnu::noinline]] static bool perform(
        SnSelection& selection, RCShdPtr<SnItem const> const& item, Operation operation) {
        Telling telling(selection);
        return (telling.*find)(item).tell(operation);
    }
    /// Performs the operation and tells what it has changed. @returns whether that is anything.
    template <class Operation>
    bool tell(Operation operation) {
        operation();
        SnSelectionChange const& change = _one.front();
        bool const hasChanged = !change.added.empty() || !change.removed.empty();
        if (hasChanged) _selection->_changes->tell(_one);
        return hasChanged;
    }

private:
    static Vector<RCShdPtr<SnItem const>> itemsOf(SnSelection const& selection);

    RCShdPtr<SnSelection> const _selection; // kept alive, whatever a listener releases
    CbChanges<SnSelectionChange>::Prepared _one;
};

} // namespace Ko
