#include "internalAPI/snSelection.h"

#include "internalAPI/src/snItemSet.h"
#include "internalAPI/src/snSelectionRecorder.h"

#include <optional>
#include <ostream>
#include <utility>

namespace Ko {

namespace {

template <auto operation>
constexpr bool mayAdd = true;
template <>
constexpr bool mayAdd<&SnItemTable::remove> = false;
template <auto operation>
constexpr bool mayRemove = true;
template <>
constexpr bool mayRemove<&SnItemTable::add> = false;

// Makes no version where nothing would change.
template <auto operation>
bool changeShared(RCShdPtr<SnItemSet>& set, RCShdPtr<SnItem const> const& item, SnItemTable::Hash hash) {
    auto const replaced = set->makeCurrent();
    bool const changes = set->getTable()->find(*item).isNull() ? mayAdd<operation> : mayRemove<operation>;
    if (!changes) return false;
    SnItemChange change(set, 1, mayAdd<operation>, mayRemove<operation>);
    change.apply<operation>(item, hash);
    change.finish();
    return true;
}

// For the rare way: `changeOne` stays in one place, where the compiler inlines it.
template <auto operation>
void changeWatched(RCShdPtr<SnItemSet>& set, RCShdPtr<SnItem const> const& item) {
    changeShared<operation>(set, item, SnItemTable::hashOf(*item));
}

template <auto operation>
bool changeOne(RCShdPtr<SnItemSet>& set, RCShdPtr<SnItem const> const& item) {
    SnItemTable::Hash const hash = SnItemTable::hashOf(*item);
    if (!set->isChangeable()) return changeShared<operation>(set, item, hash);
    SnItemTable::Step inverse; // holds a removed item, which is released last
    SnItemTable& table = *set->getTable();
    table.reserve(mayAdd<operation>);
    if (!(table.*operation)(item, hash, inverse)) return false;
    if (table.isSparse()) table.closeUp();
    return true;
}

// The other content is walked over, so that it stays as it is also where it is this selection's own.
template <auto operation>
void changeAll(RCShdPtr<SnItemSet>& set, SnItemSet& others) {
    auto const replaced = others.makeCurrent();
    RCShdPtr<SnItemTable const> const table = others.getTable();
    std::size_t const count = table->getCount();
    SnItemChange change(set, count, mayAdd<operation> ? count : 0, mayRemove<operation> ? count : 0);
    table->forEach([&](auto const& item, auto hash) { change.apply<operation>(item, hash); });
    change.finish();
}

} // namespace

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
    auto const replaced = _items->makeCurrent();
    return _items->getTable()->find(item);
}
SnSelection::Items SnSelection::getItems() const {
    auto const replaced = _items->makeCurrent();
    return Items(_items);
}

bool SnSelection::add(RCShdPtr<SnItem const> const& item) {
    if (!isWatched()) [[likely]]
        return changeOne<&SnItemTable::add>(_items, item);
    return Recorder::performOne<&Recorder::add>(*this, item, [&] { changeWatched<&SnItemTable::add>(_items, item); });
}
bool SnSelection::remove(RCShdPtr<SnItem const> const& item) {
    if (!isWatched()) [[likely]]
        return changeOne<&SnItemTable::remove>(_items, item);
    return Recorder::performOne<&Recorder::remove>(
        *this, item, [&] { changeWatched<&SnItemTable::remove>(_items, item); });
}
void SnSelection::toggle(RCShdPtr<SnItem const> const& item) {
    if (!isWatched()) [[likely]]
        changeOne<&SnItemTable::toggle>(_items, item);
    else
        Recorder::performOne<&Recorder::toggle>(
            *this, item, [&] { changeWatched<&SnItemTable::toggle>(_items, item); });
}
void SnSelection::clear() {
    auto const change = [&] { _items = RCShdPtr<SnItemSet>::create(); };
    if (!isWatched()) return change();
    Recorder(*this).clear().perform(change);
}

void SnSelection::add(SnSelection const& items) {
    if (isEmpty()) return replace(items);
    Recorder::performAll<&Recorder::add>(*this, items, [&] { changeAll<&SnItemTable::add>(_items, *items._items); });
}
void SnSelection::remove(SnSelection const& items) {
    Recorder::performAll<&Recorder::remove>(
        *this, items, [&] { changeAll<&SnItemTable::remove>(_items, *items._items); });
}
void SnSelection::toggle(SnSelection const& items) {
    Recorder::performAll<&Recorder::toggle>(
        *this, items, [&] { changeAll<&SnItemTable::toggle>(_items, *items._items); });
}
void SnSelection::replace(SnSelection const& items) noexcept {
    if (!isWatched()) {
        _items = items._items;
        return;
    }
    RCShdPtr<SnSelection> const alive(this);
    std::optional<Recorder> recorder;
    try {
        recorder.emplace(*this).replace(items);
    } catch (...) { // memory has run out
        recorder.reset();
    }
    // Items that are replaced by equal ones are released last too.
    RCShdPtr<SnItemSet> const before = std::exchange(_items, items._items);
    if (recorder)
        recorder->perform([] {});
    else
        _changes->notifyUnknown();
}

CbSubscription SnSelection::onChange(std::function<void(SnSelectionChange const&)> callable) {
    if (!_changes)
        _changes = std::make_unique<CbChanges<SnSelectionChange>>(
            "A listener of a selection", SnSelectionChange{.isUnknown = true});
    return _changes->subscribe(std::move(callable));
}

void SnSelection::dump(std::ostream& stream) const {
    for (RCShdPtr<SnItem const> const& item : getItems())
        item->dump(stream);
}

SnSelection::Items::Items(RCShdPtr<SnItemSet> const& items)
    : _keeper(items->getTable()), _begin(items->getTable()->getRow().data()),
      _end(_begin + items->getTable()->getRow().size()) {}

void dumpObject(std::ostream& stream, SnSelection const& selection) {
    selection.dump(stream);
}

} // namespace Ko
