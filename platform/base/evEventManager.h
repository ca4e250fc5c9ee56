#pragma once

#include "base/baseApi.h"
#include "base/evRequestEvent.h"
#include "base/inSingleton.h"
#include "base/lkLock.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Ko {

class EvEventManager;
extern template class KO_BASE_API InSingleton<EvEventManager>;

/// Passes work from any thread to the application thread.
///
/// The framework has no event loop. A host calls `processEvents()` from its own loop, and sets a wake-up handler that wakes
/// this loop when events wait:
///
///     EvEventManager::getInstance().setWakeUpHandler([] { myLoop.wake(); }); // then myLoop calls processEvents()
///
/// Exists while the package "base" is initialised. Events that still wait at its end are destroyed without being processed.
class KO_BASE_API EvEventManager : public InSingleton<EvEventManager> {
public:
    /// Wakes the host's loop.
    using WakeUpHandler = std::function<void()>;

    EvEventManager(EvEventManager const&) = delete;
    EvEventManager& operator=(EvEventManager const&) = delete;

    /// Appends an event to the queue. Events run in the order in which they were posted. Any thread.
    void post(EvRequestEvent event);
    /// Posts a function object, which is called without arguments. Any thread.
    template <class Request>
    void postRequest(Request&& request) {
        post(EvRequestEvent(std::forward<Request>(request)));
    }

    /// Processes the events that are in the queue at present; those that are posted meanwhile wait for the next call. An
    /// event may call it again, from a nested loop for example: the inner call then processes the remaining events of the
    /// outer one first. Application thread only.
    /// @returns the number of processed events.
    /// @throws what an event throws. That event counts as processed; the remaining ones, also when memory runs out, wait for
    ///   the next call, and the wake-up handler is called for them.
    std::size_t processEvents();
    /// The same, but begins no further event once so much time has passed; the first one runs in any case. The remaining
    /// events keep their order and wait for the next call, and the wake-up handler is called for them.
    std::size_t processEvents(std::chrono::nanoseconds budget);

    /// Sets the handler that is called, without a lock, whenever the host's loop has to call `processEvents()`:
    /// on the posting thread, when the queue was empty;
    /// on the application thread, before the first of several events runs, so that a nested loop in it wakes up for the
    /// others;
    /// in this function, when events wait already.
    ///
    /// So a loop may be woken once without finding an event. The handler must not throw. The previous handler may still be
    /// running on another thread when this returns. Any thread.
    /// @param handler empty for none.
    void setWakeUpHandler(WakeUpHandler handler);

private:
    friend class InSingleton<EvEventManager>;

    EvEventManager() = default;
    ~EvEventManager();

    template <class MayContinue>
    std::size_t processWhile(MayContinue mayContinue);
    void takePosted();
    void leaveProcessed() noexcept;
    template <class MayContinue>
    void processTaken(std::size_t& processed, MayContinue mayContinue);
    bool hasEvents() const;
    void wakeUp() const;

    mutable LkLock _lock{"EvEventManager"};
    std::vector<EvRequestEvent> _posted;
    std::shared_ptr<WakeUpHandler const> _wakeUpHandler;
    // The events that are being processed, and the index of the next one. Only used by the application thread.
    std::vector<EvRequestEvent> _taken;
    std::size_t _next = 0;
    // How many of them have not run yet; read by any thread.
    std::atomic<std::size_t> _numRemaining{0};
    // Whether there are posted events: written under the lock, read without it by the application thread.
    std::atomic<bool> _hasPosted{false};
};

} // namespace Ko
