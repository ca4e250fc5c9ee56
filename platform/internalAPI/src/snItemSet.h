#pragma once

#include "internalAPI/src/snItemTable.h"

#include <utility>

namespace Ko {

/// One version of a selection's content, shared by the selections that have this content.
///
/// Versions that were derived from one another share one table of items. The current version owns it. Every other version
/// has the steps that lead to it from its next version, and so, from version to version, from the current one. Reading a
/// version makes it the current one: the steps on the way are performed and become the way back. So a version costs as much
/// memory as it differs from the next.
///
/// A table does not change during a walk over its items. A version that needs it then gets a table of its own, and so does a
/// version whose steps would cost as much as a table.
class SnItemSet : public RCBase {
public:
    using Steps = Vector<SnItemTable::Step>;

    ~SnItemSet() override;

    std::size_t getCount() const noexcept { return isCurrent() ? _table.get()->getCount() : _count; }
    /// Whether other selections or other versions need this content unchanged.
    bool isShared() const noexcept { return getReferenceCount() > 1; }

    /// To be called before `getTable`.
    /// @returns the replaced version, or null. Release it last: the destructors of its items may run arbitrary code.
    [[nodiscard]] RCShdPtr<SnItemSet> makeCurrent() { return isCurrent() ? nullptr : makeCurrentByTheWay(); }
    RCShdPtr<SnItemTable> const& getTable() const noexcept { return _table; }
    /// Whether the table may be changed without any preparation: this is the current version, and nothing else uses it.
    bool isChangeable() const noexcept { return !isShared() && isCurrent() && _table.get()->getReferenceCount() == 1; }

private:
    friend class RCShdPtr<SnItemSet>;
    friend class SnItemChange;

    SnItemSet();
    explicit SnItemSet(RCShdPtr<SnItemTable> const& table);

    bool isCurrent() const noexcept { return _next.isNull(); }
    RCShdPtr<SnItemSet> makeCurrentByTheWay();
    RCShdPtr<SnItemSet> makeOwnTable(std::size_t steps);
    void takeTableFrom(SnItemSet& current) noexcept;
    std::size_t countSteps(SnItemSet*& current) noexcept;

    RCShdPtr<SnItemTable> _table; // of the current version, else null
    RCShdPtr<SnItemSet> _next;    // towards the current version
    Steps _steps;                 // from the next version to this one; the last one is performed first
    std::size_t _count = 0;       // of a version that is not current
    std::size_t _recorded = 0;    // steps of all versions since the table was copied; of the current one
    std::size_t _performed = 0;   // steps that reading this version has cost
};

/// One operation that changes the content of a selection: finds out whether the content is needed as it was, and then
/// records the way back. Removed items live until it is destroyed; it does not use the selection then.
class SnItemChange {
public:
    /// Takes all memory that so many changes need, of which so many add items, and so many remove some.
    SnItemChange(RCShdPtr<SnItemSet>& set, std::size_t changes, std::size_t additions, std::size_t removals);
    SnItemChange(SnItemChange const&) = delete;
    SnItemChange& operator=(SnItemChange const&) = delete;

    /// Performs one of the table's operations.
    template <auto operation>
    void apply(RCShdPtr<SnItem const> const& item, SnItemTable::Hash hash) {
        SnItemTable::Step inverse;
        if ((_table->*operation)(item, hash, inverse)) keep(inverse);
    }
    /// To be called when all changes are made.
    void finish() noexcept {
        if (!_steps && _table->isSparse()) _table->closeUp();
    }

private:
    static void makeChangeable(SnItemSet& set);
    void makeVersion(RCShdPtr<SnItemSet>& set, std::size_t changes);
    // There is room. An item that other threads may release has a destructor that does not use the selection, so that only
    // one without other owners has to wait.
    void keep(SnItemTable::Step& inverse) noexcept {
        if (_steps)
            _steps->push_back(std::move(inverse));
        else if (!inverse.item.isNull() && inverse.item->getReferenceCount() == 1)
            _removed.push_back(std::move(inverse.item));
    }

    RCShdPtr<SnItemSet> _replaced;
    Vector<RCShdPtr<SnItem const>> _removed; // if no version needs them
    SnItemSet::Steps* _steps = nullptr;      // if a version needs them
    SnItemTable* _table = nullptr;
};

} // namespace Ko
