#include "internalAPI/src/snItemSet.h"

#include <algorithm>
#include <utility>

namespace Ko {

namespace {

constexpr std::size_t smallestTable = 8;
constexpr int smallestTableShift = 29;

// Grows as if elements were added one by one.
template <class Element>
void makeRoomIn(Vector<Element>& row, std::size_t count) {
    std::size_t const needed = row.size() + count;
    if (needed > row.capacity()) row.reserve(std::max(needed, 2 * row.capacity()));
}

} // namespace

SnItemSet::~SnItemSet() = default;

// Spreads over all bits, into the upper ones, what a simple hash such as a number or an address holds in a few.
SnItemSet::Hash SnItemSet::hashOf(SnItem const& item) {
    std::uint64_t const hash = item.getHash();
    return static_cast<Hash>(((hash ^ (hash >> 32)) * 0x9E3779B97F4A7C15u) >> 32);
}

RCShdPtr<SnItem const> SnItemSet::find(SnItem const& item) const {
    if (_count == 0) return nullptr;
    std::size_t const slot = findSlot(item, hashOf(item));
    return isFree(slot) ? nullptr : _row[_table[slot].place - 1];
}

void SnItemSet::reserve(std::size_t count) {
    makeRoomIn(_row, count);
    makeRoomIn(_hashes, count);
    makeRoomInTable(count);
}

bool SnItemSet::add(RCShdPtr<SnItem const> const& item, Hash hash) {
    makeRoomInTable(1);
    std::size_t const slot = findSlot(*item, hash);
    if (!isFree(slot)) return false;
    insert(item, hash, slot);
    return true;
}

bool SnItemSet::remove(SnItem const& item, Hash hash) {
    if (_count == 0) return false;
    std::size_t const slot = findSlot(item, hash);
    if (isFree(slot)) return false;
    erase(slot);
    return true;
}

void SnItemSet::toggle(RCShdPtr<SnItem const> const& item, Hash hash) {
    makeRoomInTable(1);
    std::size_t const slot = findSlot(*item, hash);
    if (isFree(slot))
        insert(item, hash, slot);
    else
        erase(slot);
}

bool SnItemSet::isAt(std::size_t slot, SnItem const& item, Hash hash) const {
    return _table[slot].hash == hash && _row[_table[slot].place - 1]->isEqual(item);
}

// Where the item is, or the free slot where it belongs.
std::size_t SnItemSet::findSlot(SnItem const& item, Hash hash) const {
    std::size_t slot = homeOf(hash);
    while (!isFree(slot) && !isAt(slot, item, hash))
        slot = after(slot);
    return slot;
}

void SnItemSet::insert(RCShdPtr<SnItem const> const& item, Hash hash, std::size_t slot) {
    _hashes.push_back(hash);
    try {
        _row.push_back(item);
    } catch (...) {
        _hashes.pop_back();
        throw;
    }
    _table[slot] = {hash, static_cast<std::uint32_t>(_row.size())};
    ++_count;
}

void SnItemSet::erase(std::size_t slot) noexcept {
    // Destroyed last, as that may run anything.
    RCShdPtr<SnItem const> const erased = std::move(_row[_table[slot].place - 1]);
    freeSlot(slot);
    --_count;
    if (_row.size() - _count > _count) closeUp();
}

// Moves those behind it that were displaced over the hole, so that no probe ends too early.
void SnItemSet::freeSlot(std::size_t slot) noexcept {
    std::size_t const mask = _table.size() - 1;
    for (std::size_t next = after(slot); !isFree(next); next = after(next)) {
        if (((next - homeOf(_table[next].hash)) & mask) < ((next - slot) & mask)) continue;
        _table[slot] = _table[next];
        slot = next;
    }
    _table[slot] = {};
}

void SnItemSet::makeRoomInTable(std::size_t count) {
    std::size_t const needed = (_count + count) * 2;
    if (needed <= _table.size()) return;
    bool const isFirst = _table.empty();
    std::size_t size = isFirst ? smallestTable : _table.size() * 2;
    int shift = isFirst ? smallestTableShift : _shift - 1;
    for (; size < needed; size *= 2)
        --shift;
    _table = Vector<Slot>(size);
    _shift = shift;
    enterAll();
}

// Fills the empty table.
void SnItemSet::enterAll() noexcept {
    for (std::size_t index = 0; index < _row.size(); ++index) {
        if (_row[index].isNull()) continue;
        std::size_t slot = homeOf(_hashes[index]);
        while (!isFree(slot))
            slot = after(slot);
        _table[slot] = {_hashes[index], static_cast<std::uint32_t>(index + 1)};
    }
}

void SnItemSet::closeUp() noexcept {
    std::size_t kept = 0;
    for (std::size_t index = 0; index < _row.size(); ++index) {
        if (_row[index].isNull()) continue;
        _row[index].swap(_row[kept]);
        _hashes[kept++] = _hashes[index];
    }
    _row.resize(kept);
    _hashes.resize(kept);
    _table.assign(_table.size(), Slot());
    enterAll();
}

} // namespace Ko
