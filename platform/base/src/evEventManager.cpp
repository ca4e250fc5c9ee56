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

// The destructors of events may post others.
EvEventManager::~EvEventManager() {
    _taken.clear();
    while (!_posted.empty())
        std::vector<EvRequestEvent>().swap(_posted);
}

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
        processTaken(processed);
    } catch (...) {
        if (hasEvents()) wakeUp();
        throw;
    }
    return processed;
}

void EvEventManager::processTaken(std::size_t& processed) {
    // Any of the events may run a nested loop, which sleeps unless it is woken for the others.
    if (_taken.size() - _next > 1) wakeUp();
    for (; _next < _taken.size(); ++processed) {
        // Moved out first: a nested call may reallocate `_taken`.
        EvRequestEvent event = std::move(_taken[_next++]);
        _numRemaining.store(_taken.size() - _next, std::memory_order_relaxed);
        event();
    }
    _taken.clear();
    _next = 0;
}

void EvEventManager::setWakeUpHandler(WakeUpHandler handler) {
    auto replacement = handler ? std::make_shared<WakeUpHandler const>(std::move(handler)) : nullptr;
    {
        std::lock_guard const guard(_lock);
        _wakeUpHandler.swap(replacement);
    }
    if (hasEvents()) wakeUp();
}

bool EvEventManager::hasEvents() const {
    std::lock_guard const guard(_lock);
    return !_posted.empty() || _numRemaining.load(std::memory_order_relaxed) > 0;
}

void EvEventManager::takePosted() {
    std::lock_guard const guard(_lock);
    if (_taken.empty())
        _taken.swap(_posted);
    else { // within an event, or after one that threw
        _taken.insert(_taken.end(), std::make_move_iterator(_posted.begin()), std::make_move_iterator(_posted.end()));
        _posted.clear();
    }
    _numRemaining.store(_taken.size() - _next, std::memory_order_relaxed);
}

void EvEventManager::wakeUp() const {
    std::unique_lock lock(_lock);
    auto const handler = _wakeUpHandler;
    lock.unlock();
    if (handler) (*handler)();
}

} // namespace Ko
