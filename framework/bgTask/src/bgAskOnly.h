#pragma once

#include "resmgt/lkDeadline.h"

#include <utility>

namespace Ko {

/// While one exists on a thread, `BgJobProtocol::stop()` only asks on that thread, and leaves every wait to a later call.
///
/// The manager stops all jobs at first in this way, and then waits for all of them together. A protocol that waits in
/// `stop()` checks `isActive()`, and counts its grace period from the first request; the period ends at the limit at the
/// latest.
class BgAskOnly {
public:
    explicit BgAskOnly(LkDeadline::Time limit = LkDeadline::never) noexcept
        : _outer(std::exchange(_innermost, this)), _limit(limit) {}
    ~BgAskOnly() { _innermost = _outer; }
    BgAskOnly(BgAskOnly const&) = delete;
    BgAskOnly& operator=(BgAskOnly const&) = delete;

    /// Whether this thread only asks at present.
    [[nodiscard]] static bool isActive() noexcept { return _innermost != nullptr; }
    /// The end of all grace periods that begin on this thread at present.
    [[nodiscard]] static LkDeadline::Time getLimit() noexcept {
        return _innermost ? _innermost->_limit : LkDeadline::never;
    }

private:
    static inline constinit thread_local BgAskOnly const* _innermost = nullptr;
    BgAskOnly const* const _outer;
    LkDeadline::Time const _limit;
};

} // namespace Ko
