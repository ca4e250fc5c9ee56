#pragma once

#include "base/baseApi.h"
#include "base/inSingleton.h"
#include "base/oPtr.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace Ko {

/// Something to be done on the application thread.
class KO_BASE_API EvEvent {
public:
    virtual ~EvEvent();
    /// Called once, on the application thread.
    virtual void process() = 0;

private:
    friend class EvEventQueue;
    OPtr<EvEvent> _next;
};

/// An event that calls a function.
template <class Request>
class EvRequestEvent final : public EvEvent {
public:
    explicit EvRequestEvent(Request request) : _request(std::move(request)) {}
    void process() override { _request(); }

private:
    Request _request;
};

/// Events in the order in which they were added.
class KO_BASE_API EvEventQueue {
public:
    EvEventQueue() = default;
    ~EvEventQueue();
    EvEventQueue(EvEventQueue const&) = delete;
    EvEventQueue& operator=(EvEventQueue const&) = delete;

    bool isEmpty() const noexcept { return !_first; }
    void add(OPtr<EvEvent> event) noexcept { append(std::move(event), nullptr); }
    /// Moves all events of the other queue behind those of this one.
    void take(EvEventQueue& other) noexcept;
    /// The first event, which leaves the queue; there must be one.
    OPtr<EvEvent> removeFirst() noexcept;

private:
    void append(OPtr<EvEvent> first, EvEvent* last) noexcept;

    OPtr<EvEvent> _first;
    EvEvent* _last = nullptr;
};

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
    using WakeUpHandler = std::function<void()>;

    EvEventManager(EvEventManager const&) = delete;
    EvEventManager& operator=(EvEventManager const&) = delete;

    /// Events run in the order in which they were posted. Any thread.
    void post(OPtr<EvEvent> event);
    /// Posts a function to be called. Any thread.
    template <class Request>
    void postRequest(Request request) {
        post(std::make_unique<EvRequestEvent<Request>>(std::move(request)));
    }

    /// Processes the events that wait now; those that are posted meanwhile wait for the next call. May be called again by
    /// an event: the inner call goes on where the outer one is. Application thread only.
    /// @returns how many it processed.
    /// @throws what an event throws. That event is done; the wake-up handler is called for those behind it.
    std::size_t processEvents();

    /// The handler is called whenever there is something to process where there was nothing before: without a lock, on the
    /// thread that posts. It must not throw. The one set before may still be running on another thread. Any thread.
    /// @param handler none stands for nothing.
    void setWakeUpHandler(WakeUpHandler handler);

private:
    friend class InSingleton<EvEventManager>;

    EvEventManager() = default;
    ~EvEventManager() = default;

    void wakeUp() const;

    mutable std::mutex _mutex;
    EvEventQueue _posted;
    std::shared_ptr<WakeUpHandler const> _wakeUpHandler;
    // Taken over for processing; the application thread's alone.
    EvEventQueue _taken;
};

} // namespace Ko
