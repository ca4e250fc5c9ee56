#include "resmgt/lkEvent.h"

#include "base/neverDestroyed.h"

#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace Ko {

namespace {

/// Where threads wait. Shared by several events: so an event stays small, and waking a thread does not touch the event,
/// which may be destroyed by then.
struct Place {
    std::mutex mutex;
    std::condition_variable wakeUp;
};

Place& placeOf(void const* event) noexcept {
    using Places = std::array<Place, 64>;
    // Never destroyed: threads may wait until the process ends.
    static NeverDestroyed<Places> instance;
    Places& places = *instance;
    return places[std::hash<std::uintptr_t>()(reinterpret_cast<std::uintptr_t>(event) >> 4) % places.size()];
}

} // namespace

bool LkEvent::waitUntil(LkDeadline::Time deadline) const {
    if (isSet()) return true;
    Place& place = placeOf(this);
    std::unique_lock lock(place.mutex);
    for (bool inTime = true; inTime;) {
        State unset = State::Unset;
        _state.compare_exchange_strong(unset, State::Awaited, std::memory_order_acq_rel);
        if (isSet()) return true;
        if (deadline == LkDeadline::never)
            place.wakeUp.wait(lock);
        else
            inTime = place.wakeUp.wait_until(lock, deadline) == std::cv_status::no_timeout;
    }
    return isSet();
}

bool LkEvent::wait(double seconds) const {
    return waitUntil(LkDeadline::after(seconds));
}

void LkEvent::wakeAll(void const* event) noexcept {
    Place& place = placeOf(event);
    // Under the lock: a thread that found the event not set is waiting by then, and cannot miss the wake-up.
    std::lock_guard const guard(place.mutex);
    place.wakeUp.notify_all();
}

} // namespace Ko
