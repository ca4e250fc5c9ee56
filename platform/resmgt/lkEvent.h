#pragma once

#include "resmgt/lkDeadline.h"
#include "resmgt/resmgtApi.h"

#include <atomic>
#include <cstdint>

namespace Ko {

/// A flag that threads can wait for. Once set, it stays set until it is reset. Any thread.
///
/// May be destroyed as soon as the last wait has returned, also while the `set()` that ended it has not returned yet.
class KO_RESMGT_API LkEvent {
public:
    /// @param name is not copied and must live as long as the event.
    LkEvent(char const* name, bool isSet) noexcept : _name(name), _state(isSet ? State::Set : State::Unset) {}
    LkEvent(LkEvent const&) = delete;
    LkEvent& operator=(LkEvent const&) = delete;

    /// Sets the event and wakes all waiting threads. They see all writes made before this call.
    void set() noexcept {
        if (_state.exchange(State::Set, std::memory_order_acq_rel) == State::Awaited) wakeAll(this);
    }
    /// Resets the event: from now on threads wait again.
    void reset() noexcept {
        State set = State::Set;
        _state.compare_exchange_strong(set, State::Unset, std::memory_order_acq_rel);
    }
    /// Whether the event is set. If so, the caller sees all writes made before `set()`.
    bool isSet() const noexcept { return _state.load(std::memory_order_acquire) == State::Set; }

    /// Waits until the event is set.
    void wait() const { waitUntil(LkDeadline::never); }
    /// Waits until the event is set or the deadline has passed. @returns whether the event was set.
    bool waitUntil(LkDeadline::Time deadline) const;
    /// Waits until the event is set or so many seconds have passed; infinity and NaN mean without time limit.
    /// @returns whether the event was set.
    bool wait(double seconds) const;

    /// The name given to the constructor.
    [[nodiscard]] char const* getName() const noexcept { return _name; }

private:
    /// Awaited: not set, and a thread waits.
    enum class State : std::uint32_t { Unset, Set, Awaited };

    static void wakeAll(void const* event) noexcept;

    char const* _name;
    mutable std::atomic<State> _state;
};

} // namespace Ko
