#include "internalAPI/src/snItemSet.h"

#include <algorithm>
#include <utility>

namespace Ko {

namespace {

bool isWalked(RCShdPtr<SnItemTable> const& table) noexcept {
    return table.get()->getReferenceCount() > 1;
}

// Beyond it a copy of the table is hardly dearer than the steps.
std::size_t maxSteps(SnItemTable const& table) noexcept {
    return table.getCount() / 4 + 16;
}

} // namespace

// ---- versions

SnItemSet::SnItemSet() : SnItemSet(RCShdPtr<SnItemTable>::create()) {}
SnItemSet::SnItemSet(RCShdPtr<SnItemTable> const& table) : _table(table) {}

// A chain of versions may be too long for destructors that call one another.
SnItemSet::~SnItemSet() {
    RCShdPtr<SnItemSet> next = std::move(_next);
    while (!next.isNull() && next->getReferenceCount() == 1)
        next = std::move(next->_next);
}

// @returns at least the number of steps on the way from the current version, which `current` becomes.
std::size_t SnItemSet::countSteps(SnItemSet*& current) noexcept {
    std::size_t count = 0;
    for (current = this; !current->isCurrent(); current = current->_next.get())
        count += current->_steps.size() + 1;
    return count;
}

RCShdPtr<SnItemSet> SnItemSet::makeCurrentByTheWay() {
    SnItemSet* current = nullptr;
    std::size_t const steps = countSteps(current);
    _performed += steps;
    // Versions that are read in turn would perform the same steps for ever.
    if (isWalked(current->_table) || _performed > current->getCount() + maxSteps(*current->_table))
        return makeOwnTable(steps);

    // The way there is turned round first, so that each version on it leads back to the one before.
    RCShdPtr<SnItemSet> before, version(this);
    while (!version->isCurrent())
        before = std::exchange(version, std::exchange(version->_next, std::move(before)));
    RCShdPtr<SnItemSet> replaced = version;
    while (!before.isNull()) {
        SnItemSet& from = *version;
        version = std::exchange(before, std::move(before->_next));
        version->takeTableFrom(from);
        from._next = version;
    }
    return replaced;
}

// Performs the steps from the version that has the table, which become its steps from this one.
void SnItemSet::takeTableFrom(SnItemSet& current) noexcept {
    current._count = current._table->getCount();
    _table = std::move(current._table);
    _recorded = current._recorded;
    std::for_each(_steps.rbegin(), _steps.rend(), [this](SnItemTable::Step& step) { _table->apply(step); });
    std::reverse(_steps.begin(), _steps.end());
    current._steps = std::exchange(_steps, {});
}

RCShdPtr<SnItemSet> SnItemSet::makeOwnTable(std::size_t steps) {
    Vector<SnItemSet const*> way;
    SnItemSet const* version = this;
    for (; !version->isCurrent(); version = version->_next.get())
        way.push_back(version);
    auto const table = RCShdPtr<SnItemTable>::create(*version->_table);
    table->reserve(steps);
    auto replaced = RCShdPtr<SnItemSet>::create(nullptr);
    for (; !way.empty(); way.pop_back())
        std::for_each(way.back()->_steps.rbegin(), way.back()->_steps.rend(),
            [&](SnItemTable::Step step) { table->apply(step); });
    replaced->_steps.swap(_steps);
    replaced->_next.swap(_next);
    _table = table;
    _recorded = _performed = 0;
    return replaced;
}

// ---- changes

SnItemChange::SnItemChange(RCShdPtr<SnItemSet>& set, std::size_t changes, std::size_t additions, std::size_t removals)
    : _replaced(set->makeCurrent()) {
    if (set->isShared())
        makeVersion(set, changes);
    else
        makeChangeable(*set);
    _table = set->_table.get();
    _table->reserve(additions);
    if (!_steps) _removed.reserve(std::min(removals, _table->getCount()));
}

void SnItemChange::makeChangeable(SnItemSet& set) {
    set._recorded = 0;
    if (isWalked(set._table)) set._table = RCShdPtr<SnItemTable>::create(*set._table);
}

// The new version gets the table, or a copy where the steps would cost as much.
void SnItemChange::makeVersion(RCShdPtr<SnItemSet>& set, std::size_t changes) {
    SnItemSet& before = *set;
    SnItemTable const& table = *before._table;
    if (isWalked(before._table) || before._recorded + changes > maxSteps(table)) {
        auto const copy = RCShdPtr<SnItemTable>::create(table);
        if (copy->isSparse()) copy->closeUp();
        set = RCShdPtr<SnItemSet>::create(copy);
        return;
    }
    before._steps.reserve(changes);
    auto const after = RCShdPtr<SnItemSet>::create(before._table);
    before._table.reset();
    before._count = table.getCount();
    before._next = after;
    after->_recorded = before._recorded + changes;
    _steps = &before._steps;
    set = after;
}

} // namespace Ko
