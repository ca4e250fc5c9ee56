#pragma once

#include <algorithm>
#include <chrono>

namespace Ko {

/// Deadlines for waits, on the system's steady clock.
class LkDeadline {
public:
    /// A point on the steady clock.
    using Time = std::chrono::steady_clock::time_point;

    /// The deadline of a wait without time limit.
    static constexpr Time never = Time::max();

    /// The point in time `seconds` from now. It saturates: a negative number means now; from 1e9 seconds on (more than
    /// 30 years), and for infinity and NaN, the result is `never`.
    [[nodiscard]] static Time after(double seconds) {
        using namespace std::chrono;
        constexpr double longest = 1e9;
        // Negated, so that it holds for NaN too.
        if (!(seconds < longest)) return never;
        return steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(std::max(seconds, 0.0)));
    }
};

} // namespace Ko
