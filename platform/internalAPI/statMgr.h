#pragma once

#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>

namespace Ko {

/// A named counter that threads add to without contention: each thread collects on its own until it flushes.
///
/// Lives as long as the process: a static object, or one that is never destroyed. Any thread.
class KO_INTERNALAPI_API StatCounter {
public:
    /// @param name under which its total is found; several counters may share one.
    explicit StatCounter(LiString name);
    StatCounter(StatCounter const&) = delete;
    StatCounter& operator=(StatCounter const&) = delete;

    /// Adds to what this thread has collected. Takes no lock; the total grows when this thread flushes.
    void add(std::uint64_t count) const;
    /// The name under which the total is found.
    [[nodiscard]] LiString const& getName() const noexcept { return _name; }
    /// The sum of all that threads have flushed.
    [[nodiscard]] std::uint64_t getTotal() const noexcept { return _total.load(std::memory_order_relaxed); }

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
    /// Adds the counts that this thread has collected to the totals; cheap when there are none. A thread that ends flushes
    /// as well.
    static void flushStatistics() noexcept;
    /// The totals of all counters by name; counters of the same name are added up.
    [[nodiscard]] static std::map<LiString, std::uint64_t> getTotals();
};

} // namespace Ko
