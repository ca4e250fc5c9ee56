#pragma once

#include <utility>

namespace Ko {

/// While one exists on a thread, `BgJobProtocol::stop()` only asks on that thread, and leaves every wait to a later call.
///
/// The manager stops all jobs at first in this way, and then waits for all of them together. A protocol that waits in
/// `stop()` checks `isActive()`, and counts its grace period from the first request.
class BgAskOnly {
public:
    BgAskOnly() noexcept : _outer(std::exchange(_isActive, true)) {}
    ~BgAskOnly() { _isActive = _outer; }
    BgAskOnly(BgAskOnly const&) = delete;
    BgAskOnly& operator=(BgAskOnly const&) = delete;

    /// Whether this thread only asks at present.
    [[nodiscard]] static bool isActive() noexcept { return _isActive; }

private:
    static inline thread_local bool _isActive = false;
    bool _outer;
};

} // namespace Ko
