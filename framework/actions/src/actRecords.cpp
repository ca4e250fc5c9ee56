#include "framework/actions/src/actRecords.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace Ko {

// ---- records

ActRecords::~ActRecords() = default;

void ActRecords::append(OPtr<ActAction> action, ActRegistry::DynamicState state) {
    _records.push_back({action.get(), state});
    try {
        ++_registrations[action.get()];
    } catch (...) {
        _records.pop_back();
        throw;
    }
    static_cast<void>(action.release());
}

OPtrRet<ActAction> ActRecords::remove(ActAction const* action) noexcept {
    if (!action) return nullptr;
    auto const found =
        std::find_if(_records.begin(), _records.end(), [&](Record const& record) { return record.action == action; });
    if (found == _records.end()) return nullptr;
    OPtrRet<ActAction> removed = takeAt(static_cast<std::size_t>(found - _records.begin()));
    closeUp();
    return removed;
}

void ActRecords::destroyAt(std::size_t place) noexcept {
    OPtr<ActAction> removed = takeAt(place);
    closeUp();
    if (_registrations.contains(removed.get())) static_cast<void>(removed.release());
}

Vector<ActAction const*> ActRecords::getDynamic() const {
    Vector<ActAction const*> actions;
    for (Record const& record : _records)
        if (record.action && record.state == ActRegistry::Dynamic) actions.push_back(record.action);
    return actions;
}

void ActRecords::releaseDynamic() noexcept {
    for (std::size_t place = 0; place < _records.size(); ++place)
        if (_records[place].state == ActRegistry::Dynamic) static_cast<void>(takeAt(place).release());
    closeUp();
}

// The destructor of an action may still use the registry.
void ActRecords::destroyAll() noexcept {
    while (!_records.empty()) {
        auto const records = std::exchange(_records, {});
        auto registrations = std::exchange(_registrations, {});
        for (Record const& record : records)
            if (registrations.erase(record.action) > 0) OPtr<ActAction>(record.action).reset();
    }
}

OPtr<ActAction> ActRecords::takeAt(std::size_t place) noexcept {
    OPtr<ActAction> action(std::exchange(_records[place].action, nullptr));
    if (!action) return action;
    ++_removals;
    auto const registrations = _registrations.find(action.get());
    if (--registrations->second == 0) _registrations.erase(registrations);
    return action;
}

void ActRecords::closeUp() noexcept {
    if (_holds == 0) std::erase_if(_records, [](Record const& record) { return !record.action; });
}

// ---- holds

ActRecords::Hold::Hold(ActRecords& records) noexcept
    : _records(records), _end(records._records.size()), _removals(records._removals), _removalsKnown(_removals) {
    ++_records._holds;
}
ActRecords::Hold::~Hold() {
    --_records._holds;
    if (hasLost()) _records.closeUp();
}

bool ActRecords::Hold::isRegistered(ActAction const* action) {
    if (!hasLost()) return true;
    if (_removalsKnown != _records._removals) findRemaining();
    return std::binary_search(_remaining.begin(), _remaining.end(), action, std::less<>());
}

void ActRecords::Hold::findRemaining() {
    _remaining.clear();
    for (std::size_t place = 0; place < _end; ++place)
        if (ActAction const* const action = _records._records[place].action) _remaining.push_back(action);
    std::sort(_remaining.begin(), _remaining.end(), std::less<>());
    _removalsKnown = _records._removals;
}

} // namespace Ko
