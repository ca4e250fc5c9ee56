#pragma once

#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>

namespace Ko {

/// A count with a name that threads add to without disturbing each other: each collects on its own until it flushes.
///
/// Lives as long as the process: a static object, or one that is never destroyed. Any thread.
class KO_INTERNALAPI_API StatCounter {
public:
    /// @param name under which its total is found; several counters may share one.
    explicit StatCounter(LiString name);
    StatCounter(StatCounter const&) = delete;
    StatCounter& operator=(StatCounter const&) = delete;

    /// Takes no lock; the total knows of it when this thread flushes.
    void add(std::uint64_t count) const;
    /// As it was given.
    LiString const& getName() const noexcept { return _name; }
    /// What was flushed.
    std::uint64_t getTotal() const noexcept { return _total.load(std::memory_order_relaxed); }

private:
    friend class StatMgr;

    void addToTotal(std::uint64_t count) const noexcept { _total.fetch_add(count, std::memory_order_relaxed); }

    LiString _name;
    std::size_t _index;
    mutable std::atomic<std::uint64_t> _total{0};
};

/// The process's statistics.
class KO_INTERNALAPI_API StatMgr {
public:
    /// Adds what this thread has collected to the totals; costs next to nothing when that is nothing. A thread that ends
    /// flushes as well.
    static void flushStatistics() noexcept;
    /// All counters' totals, by name; counters of one name are added up.
    static std::map<LiString, std::uint64_t> getTotals();
};

} // namespace Ko
