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
        if (_posted.size() == 1) _hasPosted.store(true, std::memory_order_relaxed);
        if (_posted.size() > 1 || !_wakeUpHandler) return;
    }
    wakeUp();
}

std::size_t EvEventManager::processEvents() {
    return processWhile([] { return true; });
}

std::size_t EvEventManager::processEvents(std::chrono::nanoseconds budget) {
    using Clock = std::chrono::steady_clock;
    auto const start = Clock::now();
    return processWhile([start, budget] { return Clock::now() - start < budget; });
}

template <class MayContinue>
std::size_t EvEventManager::processWhile(MayContinue mayContinue) {
    source.require(InInitMgr::isApplicationThread(), "InInitMgr::isApplicationThread()");
    std::size_t processed = 0;
    try {
        takePosted();
        processTaken(processed, mayContinue);
    } catch (...) {
        if (hasEvents()) wakeUp();
        throw;
    }
    return processed;
}

template <class MayContinue>
void EvEventManager::processTaken(std::size_t& processed, MayContinue mayContinue) {
    // Any of the events may run a nested loop, which sleeps unless it is woken for the others.
    if (_taken.size() - _next > 1) wakeUp();
    while (_next < _taken.size()) {
        if (processed > 0 && !mayContinue()) return wakeUp();
        // Moved out first: a nested call may reallocate `_taken`.
        EvRequestEvent event = std::move(_taken[_next++]);
        _numRemaining.store(_taken.size() - _next, std::memory_order_relaxed);
        ++processed;
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
    leaveProcessed();
    // A loop that asks often keeps no posting thread from the lock.
    if (!_hasPosted.load(std::memory_order_relaxed)) return;
    std::lock_guard const guard(_lock);
    if (_taken.empty())
        _taken.swap(_posted);
    else { // within an event, after one that threw, or after the end of a budget
        _taken.insert(_taken.end(), std::make_move_iterator(_posted.begin()), std::make_move_iterator(_posted.end()));
        _posted.clear();
    }
    _hasPosted.store(false, std::memory_order_relaxed);
    _numRemaining.store(_taken.size() - _next, std::memory_order_relaxed);
}

// Otherwise the events that have run would stay for as long as each call leaves some for the next one.
void EvEventManager::leaveProcessed() noexcept {
    if (_next <= _taken.size() / 2) return;
    _taken.erase(_taken.begin(), _taken.begin() + static_cast<std::ptrdiff_t>(_next));
    _next = 0;
}

void EvEventManager::wakeUp() const {
    std::unique_lock lock(_lock);
    auto const handler = _wakeUpHandler;
    lock.unlock();
    if (handler) (*handler)();
}

} // namespace Ko
