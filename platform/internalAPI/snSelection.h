#pragma once

#include "internalAPI/snItem.h"

#include <cstddef>
#include <iterator>

namespace Ko {

class SnItemSet;

/// What the user has selected: a set of items in the order in which they were added.
///
/// Equal items are in it once. To add, remove, find or toggle an item takes constant time, however many there are; a copy
/// takes constant time too, because copies share their content until one of them changes. One thread at a time, a
/// selection and its copies together. A null item raises `ExNullPtr`.
class KO_INTERNALAPI_API SnSelection : public RCBase {
public:
    class Items;

    /// An empty selection.
    static RCShdPtr<SnSelection> create();
    /// A selection with the same content, which changes on its own from then on.
    RCShdPtr<SnSelection> copy() const;

    /// About the items as they are now:
    bool isEmpty() const noexcept { return getCount() == 0; }
    std::size_t getCount() const noexcept;
    bool contains(SnItem const& item) const;
    /// The selected item that is equal to `item`; null if there is none.
    RCShdPtr<SnItem const> find(SnItem const& item) const;
    /// The items as they are now, first added first. They stay as they are when the selection changes.
    Items getItems() const;

    /// Adds at the end, unless the item is selected already, which then stays where it is.
    /// @returns whether the selection has changed.
    bool add(RCShdPtr<SnItem const> const& item);
    /// @returns whether the selection has changed.
    bool remove(RCShdPtr<SnItem const> const& item);
    /// Removes the item if it is selected, adds it otherwise.
    void toggle(RCShdPtr<SnItem const> const& item);
    /// Removes all items.
    void clear();

    /// These do the same with each item of another selection, in its order, or where memory runs out with none of them:
    void add(SnSelection const& items);
    void remove(SnSelection const& items);
    void toggle(SnSelection const& items);
    /// Has the content of `items` from now on.
    void replace(SnSelection const& items) noexcept;

    /// Writes every item.
    void dump(std::ostream& stream) const;

protected:
    SnSelection();
    /// Shares the content.
    explicit SnSelection(RCShdPtr<SnItemSet> const& items);
    ~SnSelection() override;

private:
    friend class RCShdPtr<SnSelection>;

    SnItemSet& changeableItems();

    // Never null. Changed only while this is its only owner.
    RCShdPtr<SnItemSet> _items;
};

/// The items of a selection at one moment.
///
///     for (RCShdPtr<SnItem const> const& item : selection->getItems())
///         selection->toggle(item);
class KO_INTERNALAPI_API SnSelection::Items {
public:
    class Iterator;

    /// The items, first added first:
    Iterator begin() const noexcept;
    Iterator end() const noexcept;

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
    /// What a standard forward iterator has:
    using iterator_category = std::forward_iterator_tag;
    using value_type = RCShdPtr<SnItem const>;
    using difference_type = std::ptrdiff_t;
    using pointer = value_type const*;
    using reference = value_type const&;

    /// Equal to no item's position.
    Iterator() noexcept = default;

    /// What a standard forward iterator does:
    reference operator*() const noexcept { return *_item; }
    pointer operator->() const noexcept { return _item; }
    Iterator& operator++() noexcept {
        ++_item;
        skipGaps();
        return *this;
    }
    Iterator operator++(int) noexcept {
        Iterator const before = *this;
        ++*this;
        return before;
    }
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
