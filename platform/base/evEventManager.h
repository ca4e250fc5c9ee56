#pragma once

#include "base/baseApi.h"
#include "base/evRequestEvent.h"
#include "base/inSingleton.h"
#include "base/lkLock.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Ko {

class EvEventManager;
extern template class KO_BASE_API InSingleton<EvEventManager>;

/// Brings work from any thread to the application thread.
///
/// The framework has no loop. A host calls `processEvents()` from its own one, and sets a wake-up handler to be told when
/// that has something to do:
///
///     EvEventManager::getInstance().setWakeUpHandler([] { myLoop.wake(); }); // which calls processEvents()
///
/// It exists while the package "base" is initialised. Events that are still waiting then are destroyed, not processed.
class KO_BASE_API EvEventManager : public InSingleton<EvEventManager> {
public:
    /// Tells the host's loop that there are events to process.
    using WakeUpHandler = std::function<void()>;

    EvEventManager(EvEventManager const&) = delete;
    EvEventManager& operator=(EvEventManager const&) = delete;

    /// Events run in the order in which they were posted. Any thread.
    void post(EvRequestEvent event);
    /// Posts a function object to be called.
    template <class Request>
    void postRequest(Request&& request) {
        post(EvRequestEvent(std::forward<Request>(request)));
    }

    /// Processes the events that wait now; those that are posted meanwhile wait for the next call. May be called again by
    /// an event: the inner call goes on where the outer one is. Application thread only.
    /// @returns how many it processed.
    /// @throws what an event throws. That event is done; the wake-up handler is called for those behind it. Also where memory
    ///   runs out, all events that are not done wait for the next call.
    std::size_t processEvents();

    /// The handler is called whenever there is something to process where there was nothing before: without a lock, on the
    /// thread that posts. It must not throw. The one set before may still be running on another thread. Any thread.
    /// @param handler none stands for nothing.
    void setWakeUpHandler(WakeUpHandler handler);

private:
    friend class InSingleton<EvEventManager>;

    EvEventManager() = default;
    ~EvEventManager() = default;

    void takePosted();
    bool hasEvents() const;
    void wakeUp() const;

    mutable LkLock _lock{"EvEventManager"};
    std::vector<EvRequestEvent> _posted;
    std::shared_ptr<WakeUpHandler const> _wakeUpHandler;
    // Taken over for processing, and the next of them; the application thread's alone.
    std::vector<EvRequestEvent> _taken;
    std::size_t _next = 0;
};

} // namespace Ko
