#pragma once

#include "internalAPI/snSelectionChange.h"

#include "base/oPtr.h"

#include <cstddef>
#include <functional>
#include <iterator>

namespace Ko {

class SnItemSet;

/// The items that a user has selected: a set, in the order in which they were added.
///
/// Equal items are in it once. To add, remove, find or toggle an item takes constant time, however many there are, and so
/// does a copy: copies share their items, and take memory for what they differ in. To read a copy takes as long as there
/// are changes between it and what was read before. One thread at a time, a selection and its copies together. A null item
/// raises `ExNullPtr`.
///
/// An operation releases items when the selection has changed completely: their destructors may use it.
class KO_INTERNALAPI_API SnSelection : public RCBase {
public:
    class Items;

    /// An empty selection.
    [[nodiscard]] static RCShdPtr<SnSelection> create();
    /// A new selection with the same content, independent of this one.
    [[nodiscard]] RCShdPtr<SnSelection> copy() const;

    /// Whether no item is selected.
    [[nodiscard]] bool isEmpty() const noexcept { return getCount() == 0; }
    /// The number of selected items.
    [[nodiscard]] std::size_t getCount() const noexcept;
    /// Whether an item that is equal to this one is selected.
    [[nodiscard]] bool contains(SnItem const& item) const;
    /// The selected item that is equal to `item`; null if there is none.
    [[nodiscard]] RCShdPtr<SnItem const> find(SnItem const& item) const;
    /// A snapshot of the items, in the order in which they were added. It does not change when the selection changes.
    [[nodiscard]] Items getItems() const;

    /// Adds at the end, unless the item is selected already, which then stays where it is.
    /// @returns whether the selection has changed.
    bool add(RCShdPtr<SnItem const> const& item);
    /// Removes the selected item that is equal to this one.
    /// @returns whether the selection has changed.
    bool remove(RCShdPtr<SnItem const> const& item);
    /// Removes the item if it is selected, adds it otherwise.
    void toggle(RCShdPtr<SnItem const> const& item);
    /// Removes all items.
    void clear();

    /// Adds each item of another selection, in its order. When memory runs out, nothing changes; so for the next two.
    void add(SnSelection const& items);
    /// Removes each item of another selection.
    void remove(SnSelection const& items);
    /// Toggles each item of another selection, in its order.
    void toggle(SnSelection const& items);
    /// Replaces the content by that of `items`.
    void replace(SnSelection const& items) noexcept;

    /// Writes every item.
    void dump(std::ostream& stream) const;

    /// Calls `callable` after each operation that has changed the selection, until the result ends. A change that a callable makes is
    /// delivered after the present one. What it throws is logged. Copies have listeners of their own. While there are listeners,
    /// the operations find out what they change: `replace` and `clear` take as long as there are items.
    [[nodiscard]] CbSubscription onChange(std::function<void(SnSelectionChange const&)> callable);

protected:
    SnSelection();
    /// Shares the content.
    explicit SnSelection(RCShdPtr<SnItemSet> const& items);
    ~SnSelection() override;

private:
    friend class RCShdPtr<SnSelection>;
    class Recorder;

    bool isWatched() const noexcept { return _changes && !_changes->isEmpty(); }

    // Never null.
    RCShdPtr<SnItemSet> _items;
    // Null before the first subscription.
    OPtr<CbChanges<SnSelectionChange>> _changes;
};

/// The items of a selection at one moment.
///
///     for (RCShdPtr<SnItem const> const& item : selection->getItems())
///         selection->toggle(item);
class KO_INTERNALAPI_API SnSelection::Items {
public:
    class Iterator;

    /// The first added item.
    [[nodiscard]] Iterator begin() const noexcept;
    /// Past the last added item.
    [[nodiscard]] Iterator end() const noexcept;

private:
    friend class SnSelection;

    explicit Items(RCShdPtr<SnItemSet> const& items);

    RCShdPtr<RCBase const> _keeper;
    RCShdPtr<SnItem const> const* _begin;
    RCShdPtr<SnItem const> const* _end;
};

/// Valid as long as the `Items` that it comes from.
class SnSelection::Items::Iterator {
public:
    /// For the standard library: several passes, forwards.
    using iterator_category = std::forward_iterator_tag;
    /// For the standard library: an item.
    using value_type = RCShdPtr<SnItem const>;
    /// For the standard library: the type of a distance.
    using difference_type = std::ptrdiff_t;
    /// For the standard library: the result of `->`.
    using pointer = value_type const*;
    /// For the standard library: the result of `*`.
    using reference = value_type const&;

    /// A position of no range.
    Iterator() noexcept = default;

    /// The item at this position.
    reference operator*() const noexcept { return *_item; }
    /// For members of the item's pointer.
    pointer operator->() const noexcept { return _item; }
    /// Moves to the next item.
    Iterator& operator++() noexcept {
        ++_item;
        skipGaps();
        return *this;
    }
    /// Moves to the next item and returns the position before.
    Iterator operator++(int) noexcept {
        Iterator const before = *this;
        ++*this;
        return before;
    }
    /// Whether both are at the same position of the same range.
    friend bool operator==(Iterator const& a, Iterator const& b) noexcept { return a._item == b._item; }

private:
    friend class Items;

    Iterator(pointer item, pointer end) noexcept : _item(item), _end(end) { skipGaps(); }

    // Where an item was removed, a null pointer is left.
    void skipGaps() noexcept {
        while (_item != _end && _item->isNull())
            ++_item;
    }

    pointer _item = nullptr;
    pointer _end = nullptr;
};

inline SnSelection::Items::Iterator SnSelection::Items::begin() const noexcept {
    return Iterator(_begin, _end);
}
inline SnSelection::Items::Iterator SnSelection::Items::end() const noexcept {
    return Iterator(_end, _end);
}

/// For `RCShdPtr<SnSelection>::dump`.
KO_INTERNALAPI_API void dumpObject(std::ostream& stream, SnSelection const& selection);

} // namespace Ko
