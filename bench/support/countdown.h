#pragma once

#include <atomic>
#include <cstdint>
#include <latch>

namespace KoBench {

/// Counts executed items down, with one atomic subtraction each.
class Countdown {
public:
    explicit Countdown(std::int64_t count) : _left(count) {}
    void done() {
        if (_left.fetch_sub(1, std::memory_order_acq_rel) == 1) _end.count_down();
    }
    void wait() { _end.wait(); }

private:
    std::atomic<std::int64_t> _left;
    std::latch _end{1};
};

} // namespace KoBench
