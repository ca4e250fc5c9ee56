#pragma once

#include "internalAPI/snSelection.h"

namespace Ko {

/// Records what an operation will change in a watched selection, before it is performed, and notifies the listeners afterwards. When
/// memory runs out, nothing has changed yet. Removed items live until the listeners were notified.
class SnSelection::Recorder {
public:
    explicit Recorder(SnSelection& selection) : _selection(&selection), _one(1) {}

    Recorder& add(RCShdPtr<SnItem const> const& item);
    Recorder& remove(RCShdPtr<SnItem const> const& item);
    Recorder& toggle(RCShdPtr<SnItem const> const& item);
    Recorder& replace(SnSelection const& items);
    Recorder& clear();

    /// Performs the operation and notifies the listeners. @returns whether anything has changed.
    template <class Operation>
    bool perform(Operation operation) {
        operation();
        SnSelectionChange const& change = _one.front();
        bool const hasChanged = !change.added.empty() || !change.removed.empty();
        if (hasChanged) _selection->_changes->notify(_one);
        return hasChanged;
    }
    /// Records with one of the functions above for one item, and performs. Not inlined, so that selections without listeners pay for one
    /// comparison only.
    template <auto record, class Operation>
    [[gnu::noinline]] static bool performOne(
        SnSelection& selection, RCShdPtr<SnItem const> const& item, Operation operation) {
        return (Recorder(selection).*record)(item).perform(operation);
    }
    /// The same for each item of another selection; records only for a watched one.
    template <auto record, class Operation>
    static void performAll(SnSelection& selection, SnSelection const& items, Operation operation) {
        if (!selection.isWatched()) return operation();
        Recorder recorder(selection);
        for (auto const& item : itemsOf(items))
            (recorder.*record)(item);
        recorder.perform(operation);
    }

private:
    static Vector<RCShdPtr<SnItem const>> itemsOf(SnSelection const& selection);

    RCShdPtr<SnSelection> const _selection; // kept alive, whatever a listener releases
    CbChanges<SnSelectionChange>::Prepared _one;
};

} // namespace Ko
