#include "internalAPI/statMgr.h"

#include "base/neverDestroyed.h"

#include <mutex>
#include <utility>

namespace Ko {

namespace {

// Never destroyed: threads may flush until the process has ended.
struct Registry {
    std::mutex mutex;
    Vector<StatCounter const*> counters;
};

Registry& registry() {
    static NeverDestroyed<Registry> instance;
    return *instance;
}

/// The counts that one thread has collected, by the index of the counter.
struct Collected {
    Collected() = default;
    ~Collected() { StatMgr::flushStatistics(); }
    Collected(Collected const&) = delete;
    Collected& operator=(Collected const&) = delete;

    Vector<std::uint64_t> counts;
    bool isDirty = false;
};

thread_local Collected collected;

} // namespace

StatCounter::StatCounter(LiString name) : _name(std::move(name)) {
    std::lock_guard const guard(registry().mutex);
    _index = registry().counters.size();
    registry().counters.push_back(this);
}

void StatCounter::add(std::uint64_t count) const {
    if (collected.counts.size() <= _index) collected.counts.resize(_index + 1);
    collected.counts[_index] += count;
    collected.isDirty = true;
}

void StatMgr::flushStatistics() noexcept {
    if (!collected.isDirty) return;
    collected.isDirty = false;
    std::lock_guard const guard(registry().mutex);
    for (std::size_t index = 0; index < collected.counts.size(); ++index)
        registry().counters[index]->addToTotal(std::exchange(collected.counts[index], 0));
}

std::map<LiString, std::uint64_t> StatMgr::getTotals() {
    std::map<LiString, std::uint64_t> totals;
    std::lock_guard const guard(registry().mutex);
    for (StatCounter const* const counter : registry().counters)
        totals[counter->getName()] += counter->getTotal();
    return totals;
}

} // namespace Ko
