#pragma once

#include "resmgt/resmgtApi.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace Ko {

/// Something that has happened, for threads that wait for it: once set, it stays set until it is reset. Any thread.
///
/// May be destroyed as soon as the last wait has returned, also while the `set()` that ended it is still returning.
class KO_RESMGT_API LkEvent {
public:
    /// @param name is not copied and must live as long as the event.
    LkEvent(char const* name, bool isSet) noexcept : _name(name), _state(isSet ? State::Set : State::Unset) {}
    LkEvent(LkEvent const&) = delete;
    LkEvent& operator=(LkEvent const&) = delete;

    /// Lets all go on that wait, and those that will.
    void set() noexcept {
        // Release: what happened before is seen by those that wait.
        if (_state.exchange(State::Set, std::memory_order_acq_rel) == State::Awaited) wakeAll(this);
    }
    /// From now on threads wait again.
    void reset() noexcept {
        State set = State::Set;
        _state.compare_exchange_strong(set, State::Unset, std::memory_order_acq_rel);
    }
    /// Who sees it set sees what happened before `set()`.
    bool isSet() const noexcept { return _state.load(std::memory_order_acquire) == State::Set; }

    /// Returns when the event is set, at once if it is.
    void wait() const { waitUntil(std::chrono::steady_clock::time_point::max()); }
    /// Waits no longer than to the deadline. @returns whether the event was set.
    bool waitUntil(std::chrono::steady_clock::time_point deadline) const;
    /// Waits no longer than so many seconds. @returns whether the event was set.
    bool wait(double seconds) const;

    /// As it was given.
    char const* getName() const noexcept { return _name; }

private:
    /// Awaited: not set, and somebody waits.
    enum class State : std::uint32_t { Unset, Set, Awaited };

    static void wakeAll(void const* event) noexcept;

    char const* _name;
    mutable std::atomic<State> _state;
};

} // namespace Ko
