#include "internalAPI/snSelection.h"

#include "internalAPI/src/snItemSet.h"

#include <ostream>

namespace Ko {

SnSelection::SnSelection() : _items(RCShdPtr<SnItemSet>::create()) {}
SnSelection::SnSelection(RCShdPtr<SnItemSet> const& items) : _items(items) {}
SnSelection::~SnSelection() = default;

RCShdPtr<SnSelection> SnSelection::create() {
    return RCShdPtr<SnSelection>::create();
}
RCShdPtr<SnSelection> SnSelection::copy() const {
    return RCShdPtr<SnSelection>::create(_items);
}

std::size_t SnSelection::getCount() const noexcept {
    return _items.get()->getCount();
}
bool SnSelection::contains(SnItem const& item) const {
    return !find(item).isNull();
}
RCShdPtr<SnItem const> SnSelection::find(SnItem const& item) const {
    return _items->find(item);
}
SnSelection::Items SnSelection::getItems() const {
    return Items(_items);
}

bool SnSelection::add(RCShdPtr<SnItem const> const& item) {
    SnItemSet::Hash const hash = SnItemSet::hashOf(*item);
    return changeableItems().add(item, hash);
}
bool SnSelection::remove(RCShdPtr<SnItem const> const& item) {
    SnItemSet::Hash const hash = SnItemSet::hashOf(*item);
    return changeableItems().remove(*item, hash);
}
void SnSelection::toggle(RCShdPtr<SnItem const> const& item) {
    SnItemSet::Hash const hash = SnItemSet::hashOf(*item);
    changeableItems().toggle(item, hash);
}
void SnSelection::clear() {
    _items = RCShdPtr<SnItemSet>::create();
}

// The other content is shared meanwhile, so that it stays as it is also where it is this selection's own.

void SnSelection::add(SnSelection const& items) {
    if (isEmpty()) return replace(items);
    RCShdPtr<SnItemSet const> const others = items._items;
    SnItemSet& own = changeableItems();
    own.reserve(others->getCount()); // all or nothing
    others->forEach([&](auto const& item, SnItemSet::Hash hash) { own.add(item, hash); });
}
void SnSelection::remove(SnSelection const& items) {
    RCShdPtr<SnItemSet const> const others = items._items;
    SnItemSet& own = changeableItems();
    others->forEach([&](auto const& item, SnItemSet::Hash hash) { own.remove(*item, hash); });
}
void SnSelection::toggle(SnSelection const& items) {
    RCShdPtr<SnItemSet const> const others = items._items;
    SnItemSet& own = changeableItems();
    own.reserve(others->getCount());
    others->forEach([&](auto const& item, SnItemSet::Hash hash) { own.toggle(item, hash); });
}
void SnSelection::replace(SnSelection const& items) noexcept {
    _items = items._items;
}

void SnSelection::dump(std::ostream& stream) const {
    for (RCShdPtr<SnItem const> const& item : getItems())
        item->dump(stream);
}

SnItemSet& SnSelection::changeableItems() {
    if (_items->getReferenceCount() > 1) _items = RCShdPtr<SnItemSet>::create(*_items);
    return *_items;
}

SnSelection::Items::Items(RCShdPtr<SnItemSet> const& items)
    : _keeper(items), _begin(items->getRow().data()), _end(_begin + items->getRow().size()) {}

void dumpObject(std::ostream& stream, SnSelection const& selection) {
    selection.dump(stream);
}

} // namespace Ko
