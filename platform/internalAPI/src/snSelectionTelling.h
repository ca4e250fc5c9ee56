#pragma once

#include "internalAPI/snSelection.h"

namespace Ko {

/// Finds out what an operation will change in a watched selection, and notifies the listeners afterwards. When memory runs out,
/// nothing has changed yet. Removed items live until the listeners were notified.
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
    /// Performs the operation and notifies the listeners. @returns whether anything has changed.
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
