#include "internalAPI/src/snSelectionRecorder.h"

#include "internalAPI/cbChanges.imp.h"

namespace Ko {

template class CbDispatcher<SnSelectionChange>;
template class CbChanges<SnSelectionChange>;

SnSelection::Recorder& SnSelection::Recorder::add(RCShdPtr<SnItem const> const& item) {
    if (!_selection->contains(*item)) _one.front().added.push_back(item);
    return *this;
}
SnSelection::Recorder& SnSelection::Recorder::remove(RCShdPtr<SnItem const> const& item) {
    RCShdPtr<SnItem const> const found = _selection->find(*item);
    if (!found.isNull()) _one.front().removed.push_back(found);
    return *this;
}
SnSelection::Recorder& SnSelection::Recorder::toggle(RCShdPtr<SnItem const> const& item) {
    return _selection->contains(*item) ? remove(item) : add(item);
}

// Items stay as far as the new content begins with them, in their order.
SnSelection::Recorder& SnSelection::Recorder::replace(SnSelection const& items) {
    Vector<RCShdPtr<SnItem const>> after = itemsOf(items);
    SnSelectionChange& change = _one.front();
    auto next = after.begin();
    for (auto const& item : itemsOf(*_selection))
        if (next != after.end() && (item == *next || item->isEqual(**next)))
            ++next;
        else
            change.removed.push_back(item);
    change.added.assign(next, after.end());
    return *this;
}
SnSelection::Recorder& SnSelection::Recorder::clear() {
    _one.front().removed = itemsOf(*_selection);
    return *this;
}

// A copy: an operation may follow while it is walked over.
Vector<RCShdPtr<SnItem const>> SnSelection::Recorder::itemsOf(SnSelection const& selection) {
    Vector<RCShdPtr<SnItem const>> result;
    result.reserve(selection.getCount());
    for (auto const& item : selection.getItems())
        result.push_back(item);
    return result;
}

} // namespace Ko
