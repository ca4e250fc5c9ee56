#pragma once

#include "internalAPI/snItem.h"

#include <cstddef>
#include <cstdint>

namespace Ko {

/// A set of items in the order of insertion: the items in a row, and a hash table of their places in it.
///
/// A removed item leaves a gap in the row; when there are more gaps than items, the row is closed up, which costs each
/// removal a constant share. The table is open, probed linearly, and keeps the hash with each place, so that it seldom has
/// to look at an item that is not the right one.
class SnItemSet : public RCBase {
public:
    using Hash = std::uint32_t;

    SnItemSet() = default;
    ~SnItemSet() override;

    static Hash hashOf(SnItem const& item);

    std::size_t getCount() const noexcept { return _count; }
    /// In the order of insertion, with null pointers where items were removed.
    Vector<RCShdPtr<SnItem const>> const& getRow() const noexcept { return _row; }

    /// Calls `visit` with each item and its hash.
    template <class Visit>
    void forEach(Visit visit) const {
        for (std::size_t index = 0; index < _row.size(); ++index)
            if (!_row[index].isNull()) visit(_row[index], _hashes[index]);
    }

    RCShdPtr<SnItem const> find(SnItem const& item) const;
    /// Makes so many additions unable to fail for lack of memory.
    void reserve(std::size_t count);
    bool add(RCShdPtr<SnItem const> const& item, Hash hash);
    bool remove(SnItem const& item, Hash hash);
    void toggle(RCShdPtr<SnItem const> const& item, Hash hash);

private:
    friend class RCShdPtr<SnItemSet>;

    // Places are counted from 1; at place 0 the slot is free.
    struct Slot {
        Hash hash = 0;
        std::uint32_t place = 0;
    };

    SnItemSet(SnItemSet const&) = default;

    std::size_t homeOf(Hash hash) const noexcept { return hash >> _shift; }
    std::size_t after(std::size_t slot) const noexcept { return (slot + 1) & (_table.size() - 1); }
    bool isFree(std::size_t slot) const noexcept { return _table[slot].place == 0; }
    bool isAt(std::size_t slot, SnItem const& item, Hash hash) const;

    std::size_t findSlot(SnItem const& item, Hash hash) const;
    void insert(RCShdPtr<SnItem const> const& item, Hash hash, std::size_t slot);
    void erase(std::size_t slot) noexcept;
    void freeSlot(std::size_t slot) noexcept;
    void makeRoomInTable(std::size_t count);
    void enterAll() noexcept;
    void closeUp() noexcept;

    Vector<RCShdPtr<SnItem const>> _row;
    Vector<Hash> _hashes; // of the items in the row
    Vector<Slot> _table;  // as many as a power of two, at least half of them free
    int _shift = 0;       // leaves as many of a hash's upper bits as number the slots
    std::size_t _count = 0;
};

} // namespace Ko
