#include "base/evEventManager.h"

#include "base/assertions.h"
#include "base/inInitMgr.h"
#include "base/inSingleton.imp.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"base\\src\\evEventManager"};

} // namespace

template class InSingleton<EvEventManager>;

EvEvent::~EvEvent() = default;

// One by one: a long chain that destroys itself would overflow the call stack.
EvEventQueue::~EvEventQueue() {
    while (!isEmpty())
        removeFirst();
}

void EvEventQueue::take(EvEventQueue& other) noexcept {
    if (!other.isEmpty()) append(std::move(other._first), std::exchange(other._last, nullptr));
}

OPtr<EvEvent> EvEventQueue::removeFirst() noexcept {
    OPtr<EvEvent> event = std::move(_first);
    _first = std::move(event->_next);
    if (!_first) _last = nullptr;
    return event;
}

void EvEventQueue::append(OPtr<EvEvent> first, EvEvent* last) noexcept {
    EvEvent* const newLast = last ? last : first.get();
    (_last ? _last->_next : _first) = std::move(first);
    _last = newLast;
}

void EvEventManager::post(OPtr<EvEvent> event) {
    source.require(event != nullptr, "event != 0");
    {
        std::lock_guard const guard(_mutex);
        bool const wasEmpty = _posted.isEmpty();
        _posted.add(std::move(event));
        if (!wasEmpty || !_wakeUpHandler) return;
    }
    wakeUp();
}

std::size_t EvEventManager::processEvents() {
    source.require(InInitMgr::isApplicationThread(), "InInitMgr::isApplicationThread()");
    {
        std::lock_guard const guard(_mutex);
        _taken.take(_posted);
    }
    std::size_t processed = 0;
    try {
        for (; !_taken.isEmpty(); ++processed)
            _taken.removeFirst()->process();
    } catch (...) {
        if (!_taken.isEmpty()) wakeUp();
        throw;
    }
    return processed;
}

void EvEventManager::setWakeUpHandler(WakeUpHandler handler) {
    auto replacement = handler ? std::make_shared<WakeUpHandler const>(std::move(handler)) : nullptr;
    std::lock_guard const guard(_mutex);
    _wakeUpHandler.swap(replacement);
}

void EvEventManager::wakeUp() const {
    std::unique_lock lock(_mutex);
    auto const handler = _wakeUpHandler;
    lock.unlock();
    if (handler) (*handler)();
}

} // namespace Ko
