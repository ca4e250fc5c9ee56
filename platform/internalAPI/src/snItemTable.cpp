#include "internalAPI/src/snItemTable.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace Ko {

namespace {

constexpr std::size_t fewestSlots = 8;
constexpr int bitsOfHash = 32;

// Grows as if elements were added one by one.
template <class Element>
void makeRoomIn(Vector<Element>& row, std::size_t count) {
    std::size_t const needed = row.size() + count;
    if (needed > row.capacity()) row.reserve(std::max(needed, 2 * row.capacity()));
}

// Shrinking needs memory for the smaller copy; without it, the vector stays as it is.
template <class Element>
void giveBack(Vector<Element>& vector) noexcept try {
    if (vector.capacity() > 4 * std::max(vector.size(), fewestSlots)) vector.shrink_to_fit();
} catch (std::bad_alloc const&) {
}

} // namespace

SnItemTable::~SnItemTable() = default;

// Simple hashes, such as numbers and addresses, differ in few bits: spread these over all bits, the upper ones above all.
SnItemTable::Hash SnItemTable::hashOf(SnItem const& item) {
    std::uint64_t const hash = item.getHash();
    return static_cast<Hash>(((hash ^ (hash >> 32)) * 0x9E3779B97F4A7C15u) >> 32);
}

RCShdPtr<SnItem const> SnItemTable::find(SnItem const& item) const {
    if (_count == 0) return nullptr;
    std::size_t const slot = findSlot(item, hashOf(item));
    return isFree(slot) ? nullptr : _row[_slots[slot].place - 1];
}

void SnItemTable::reserve(std::size_t count) {
    makeRoomIn(_row, count);
    makeRoomIn(_hashes, count);
    std::size_t const needed = (_count + count) * 2;
    if (needed > _slots.size()) setNumberOfSlots(needed);
}

bool SnItemTable::add(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse) {
    std::size_t const slot = findSlot(*item, hash);
    if (!isFree(slot)) return false;
    insert(item, hash, slot, inverse);
    return true;
}

bool SnItemTable::remove(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse) {
    if (_count == 0) return false;
    std::size_t const slot = findSlot(*item, hash);
    if (isFree(slot)) return false;
    erase(slot, inverse);
    return true;
}

bool SnItemTable::toggle(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse) {
    std::size_t const slot = findSlot(*item, hash);
    if (isFree(slot))
        insert(item, hash, slot, inverse);
    else
        erase(slot, inverse);
    return true;
}

void SnItemTable::apply(Step& step) noexcept {
    if (step.item.isNull())
        take(step);
    else
        put(step);
}

void SnItemTable::closeUp() noexcept {
    std::size_t kept = 0;
    for (std::size_t index = 0; index < _row.size(); ++index) {
        if (_row[index].isNull()) continue;
        _row[index].swap(_row[kept]);
        _hashes[kept++] = _hashes[index];
    }
    _row.resize(kept);
    _hashes.resize(kept);
    std::size_t const enough = std::bit_ceil(std::max(4 * _count, fewestSlots));
    if (_slots.size() > enough) {
        _shift += std::countr_zero(_slots.size()) - std::countr_zero(enough);
        _slots.resize(enough);
    }
    std::fill(_slots.begin(), _slots.end(), Slot());
    enterAll();
    giveBack(_row);
    giveBack(_hashes);
    giveBack(_slots);
}

bool SnItemTable::isAt(std::size_t slot, SnItem const& item, Hash hash) const {
    return _slots[slot].hash == hash && _row[_slots[slot].place - 1]->isEqual(item);
}

// Where the item is, or the free slot where it belongs.
std::size_t SnItemTable::findSlot(SnItem const& item, Hash hash) const {
    std::size_t slot = homeOf(hash);
    while (!isFree(slot) && !isAt(slot, item, hash))
        slot = after(slot);
    return slot;
}

std::size_t SnItemTable::findFreeSlot(Hash hash) const noexcept {
    std::size_t slot = homeOf(hash);
    while (!isFree(slot))
        slot = after(slot);
    return slot;
}

std::size_t SnItemTable::findSlotOf(Place place) const noexcept {
    std::size_t slot = homeOf(_hashes[place]);
    while (_slots[slot].place != place + 1)
        slot = after(slot);
    return slot;
}

void SnItemTable::insert(RCShdPtr<SnItem const> const& item, Hash hash, std::size_t slot, Step& inverse) noexcept {
    inverse.hash = hash;
    inverse.place = static_cast<Place>(_row.size());
    inverse.isAtEnd = true;
    _row.push_back(item);
    _hashes.push_back(hash);
    _slots[slot] = {hash, static_cast<Place>(_row.size())};
    ++_count;
}

void SnItemTable::erase(std::size_t slot, Step& inverse) noexcept {
    Place const place = _slots[slot].place - 1;
    inverse.item.swap(_row[place]);
    inverse.hash = _slots[slot].hash;
    inverse.place = place;
    freeSlot(slot);
    --_count;
}

void SnItemTable::put(Step& step) noexcept {
    if (step.isAtEnd) {
        _row.push_back(std::move(step.item));
        _hashes.push_back(step.hash);
    } else {
        _row[step.place] = std::move(step.item);
    }
    _slots[findFreeSlot(step.hash)] = {step.hash, step.place + 1};
    ++_count;
}

void SnItemTable::take(Step& step) noexcept {
    freeSlot(findSlotOf(step.place));
    step.item = std::move(_row[step.place]);
    --_count;
    if (!step.isAtEnd) return;
    _row.pop_back();
    _hashes.pop_back();
}

// Moves displaced entries that follow into the hole, so that no probe ends too early.
void SnItemTable::freeSlot(std::size_t slot) noexcept {
    std::size_t const mask = _slots.size() - 1;
    for (std::size_t next = after(slot); !isFree(next); next = after(next)) {
        if (((next - homeOf(_slots[next].hash)) & mask) < ((next - slot) & mask)) continue;
        _slots[slot] = _slots[next];
        slot = next;
    }
    _slots[slot] = {};
}

void SnItemTable::setNumberOfSlots(std::size_t atLeast) {
    std::size_t const number = std::bit_ceil(std::max(atLeast, fewestSlots));
    _slots = Vector<Slot>(number);
    _shift = bitsOfHash - std::countr_zero(number);
    enterAll();
}

// Fills the empty table.
void SnItemTable::enterAll() noexcept {
    for (std::size_t index = 0; index < _row.size(); ++index)
        if (!_row[index].isNull())
            _slots[findFreeSlot(_hashes[index])] = {_hashes[index], static_cast<Place>(index + 1)};
}

} // namespace Ko
