#include "base/evEventManager.h"

#include "base/assertions.h"
#include "base/inInitMgr.h"
#include "base/inSingleton.imp.h"

#include <iterator>
#include <mutex>

namespace Ko {

namespace {

constexpr AssertionSource source{"base\\src\\evEventManager"};

} // namespace

template class InSingleton<EvEventManager>;

void EvEventManager::post(EvRequestEvent event) {
    {
        std::lock_guard const guard(_lock);
        _posted.push_back(std::move(event));
        if (_posted.size() > 1 || !_wakeUpHandler) return;
    }
    wakeUp();
}

std::size_t EvEventManager::processEvents() {
    source.require(InInitMgr::isApplicationThread(), "InInitMgr::isApplicationThread()");
    std::size_t processed = 0;
    try {
        takePosted();
        for (; _next < _taken.size(); ++processed) {
            // Taken out first: an inner call may move the others.
            EvRequestEvent event = std::move(_taken[_next++]);
            event();
        }
    } catch (...) {
        if (hasEvents()) wakeUp();
        throw;
    }
    _taken.clear();
    _next = 0;
    return processed;
}

void EvEventManager::setWakeUpHandler(WakeUpHandler handler) {
    auto replacement = handler ? std::make_shared<WakeUpHandler const>(std::move(handler)) : nullptr;
    std::lock_guard const guard(_lock);
    _wakeUpHandler.swap(replacement);
}

bool EvEventManager::hasEvents() const {
    std::lock_guard const guard(_lock);
    return _next < _taken.size() || !_posted.empty();
}

void EvEventManager::takePosted() {
    std::lock_guard const guard(_lock);
    if (_taken.empty()) {
        _taken.swap(_posted);
        return;
    }
    // Inside an event, or behind one that threw.
    _taken.insert(_taken.end(), std::make_move_iterator(_posted.begin()), std::make_move_iterator(_posted.end()));
    _posted.clear();
}

void EvEventManager::wakeUp() const {
    std::unique_lock lock(_lock);
    auto const handler = _wakeUpHandler;
    lock.unlock();
    if (handler) (*handler)();
}

} // namespace Ko
