#pragma once

#include "internalAPI/snItem.h"

#include <cstddef>
#include <cstdint>

namespace Ko {

/// A set of items in the order of insertion: the items in a row, and a hash table of their places in it.
///
/// A removed item leaves a gap in the row, so that all others keep their places and the removal can be taken back. The hash
/// table is open, probed linearly, and keeps the hash with each place, so that it seldom compares items that differ.
class SnItemTable : public RCBase {
public:
    using Hash = std::uint32_t;
    using Place = std::uint32_t;

    /// The inverse of one change, which restores the table as it was before.
    struct Step {
        RCShdPtr<SnItem const> item; // is put at the place; null: the item there is taken out
        Hash hash = 0;
        Place place = 0;
        bool isAtEnd = false; // the row grows or shrinks by this place
    };

    SnItemTable() = default;
    ~SnItemTable() override;

    static Hash hashOf(SnItem const& item);

    std::size_t getCount() const noexcept { return _count; }
    /// In the order of insertion, with null pointers where items were removed.
    Vector<RCShdPtr<SnItem const>> const& getRow() const noexcept { return _row; }
    /// Whether there are more gaps than items.
    bool isSparse() const noexcept { return _row.size() - _count > _count; }

    /// Calls `visit` with each item and its hash.
    template <class Visit>
    void forEach(Visit visit) const {
        for (std::size_t index = 0; index < _row.size(); ++index)
            if (!_row[index].isNull()) visit(_row[index], _hashes[index]);
    }

    /// Null if no equal item is in the set.
    RCShdPtr<SnItem const> find(SnItem const& item) const;

    /// Makes sure that so many additions need no memory.
    void reserve(std::size_t count);
    /// After `reserve`, these fail only where comparing items fails.
    /// @param inverse a new step, which becomes the way back.
    /// @returns whether the set has changed.
    bool add(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse);
    bool remove(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse);
    bool toggle(RCShdPtr<SnItem const> const& item, Hash hash, Step& inverse);
    /// Performs the step, which becomes its own inverse.
    void apply(Step& step) noexcept;

    /// Closes the gaps and gives memory back that the present number of items does not need. All steps are void then.
    void closeUp() noexcept;

private:
    friend class RCShdPtr<SnItemTable>;

    // Places are counted from 1; at place 0 the slot is free.
    struct Slot {
        Hash hash = 0;
        Place place = 0;
    };

    SnItemTable(SnItemTable const&) = default;

    std::size_t homeOf(Hash hash) const noexcept { return hash >> _shift; }
    std::size_t after(std::size_t slot) const noexcept { return (slot + 1) & (_slots.size() - 1); }
    bool isFree(std::size_t slot) const noexcept { return _slots[slot].place == 0; }
    bool isAt(std::size_t slot, SnItem const& item, Hash hash) const;

    std::size_t findSlot(SnItem const& item, Hash hash) const;
    std::size_t findFreeSlot(Hash hash) const noexcept;
    std::size_t findSlotOf(Place place) const noexcept;
    void insert(RCShdPtr<SnItem const> const& item, Hash hash, std::size_t slot, Step& inverse) noexcept;
    void erase(std::size_t slot, Step& inverse) noexcept;
    void put(Step& step) noexcept;
    void take(Step& step) noexcept;
    void freeSlot(std::size_t slot) noexcept;
    void setNumberOfSlots(std::size_t atLeast);
    void enterAll() noexcept;

    Vector<RCShdPtr<SnItem const>> _row;
    Vector<Hash> _hashes; // of the items in the row
    Vector<Slot> _slots;  // as many as a power of two, at least half of them free
    int _shift = 0;       // leaves as many of a hash's upper bits as number the slots
    std::size_t _count = 0;
};

} // namespace Ko
