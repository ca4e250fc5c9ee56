#pragma once

#include "resmgt/mtGroup.h"

#include "base/assertions.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Ko {

namespace MtGroupSource {
// Broken invariants of all groups are reported with this source and these lines, wherever they are instantiated.
constexpr AssertionSource source{".\\resmgt/mtGroup.imp.h"};
constexpr int tagAcquired = 66;
constexpr int tagOfThisGroup = 89;
constexpr int noProducers = 102;
} // namespace MtGroupSource

/// Gives access to the sequence in a queue of the standard library.
template <class Container>
struct MtQueueAccess : Container {
    static auto& sequenceOf(Container& queue) noexcept { return queue.*&MtQueueAccess::c; }
};

template <class Container>
MtGroup<Container>::MtGroup(LiString name, int numThreads, std::ptrdiff_t containerSize)
    : MtThreadPool(std::move(name), numThreads, false, 0),
      _capacity(containerSize == unlimited ? std::numeric_limits<std::size_t>::max()
                                           : static_cast<std::size_t>(containerSize)),
      _groupTag(_requestMgr.acquireTag()) {
    using namespace MtGroupSource;
    source.require(containerSize >= 0, "containerSize >= 0");
    source.require(_groupTag.isValid(), "_groupTag.isValid()", tagAcquired);
    try {
        start();
    } catch (...) {
        stopWorkers();
        throw;
    }
}

template <class Container>
MtGroup<Container>::~MtGroup() {
    using namespace MtGroupSource;
    stopWorkers();
    discardTasks(_ready);
    discardTasks(_arrived);
    waitForRequests();
    _requestMgr.releaseTag(_groupTag);
    --_producers;
    source.require(_producers == 0, "0 == _producers", noProducers);
}

template <class Container>
void MtGroup<Container>::add(RCShdPtr<MtTaskImp> imp) {
    if (imp.isNull()) RCExUtil::throwExNullPtr(typeid(MtTaskImp).name());
    bool wakes = false;
    {
        std::unique_lock lock(_lock);
        while (_numWaiting >= _capacity)
            _nonFull.wait(lock);
        _arrived.push(MtTask(std::move(imp), _groupTag));
        if (isLimited()) ++_numWaiting;
        MtRequestMgr::increment(_groupTag);
        wakes = needsWorker();
    }
    if (wakes) _nonEmpty.signal();
}

template <class Container>
void MtGroup<Container>::addAhead(
    RCShdPtr<MtTaskImp> imp, std::function<bool(MtTaskImp const& waiting)> const& isBehind) {
    if (imp.isNull()) RCExUtil::throwExNullPtr(typeid(MtTaskImp).name());
    bool wakes = false;
    {
        std::lock_guard const taking(_takeLock);
        std::lock_guard const guard(_lock);
        auto const insert = [&, matches = [&](MtTask const& task) { return isBehind(*task.getImp()); }](
                                Container& container, bool atTheEnd) {
            auto& sequence = MtQueueAccess<Container>::sequenceOf(container);
            auto const place = std::find_if(sequence.begin(), sequence.end(), matches);
            if (place == sequence.end() && !atTheEnd) return false;
            sequence.insert(place, MtTask(std::move(imp), _groupTag));
            return true;
        };
        if (!insert(_ready, false)) insert(_arrived, true);
        if (isLimited()) ++_numWaiting;
        MtRequestMgr::increment(_groupTag);
        wakes = needsWorker();
    }
    if (wakes) _nonEmpty.signal();
}

template <class Container>
bool MtGroup<Container>::moveToFront(MtTaskImp const& imp) noexcept {
    auto const bringToFront = [&imp](auto& tasks) {
        auto const found =
            std::find_if(tasks.begin(), tasks.end(), [&imp](MtTask const& task) { return task.getImp() == &imp; });
        if (found == tasks.end()) return false;
        std::rotate(tasks.begin(), found, std::next(found));
        return true;
    };
    std::lock_guard const taking(_takeLock);
    std::lock_guard const guard(_lock);
    auto& ready = MtQueueAccess<Container>::sequenceOf(_ready);
    auto& arrived = MtQueueAccess<Container>::sequenceOf(_arrived);
    if (bringToFront(ready)) return true;
    if (!bringToFront(arrived)) return false;
    if (ready.empty()) return true;
    // The two change places, as an insertion could fail: the task is the first one, and what was the last ready one follows.
    std::rotate(ready.begin(), std::prev(ready.end()), ready.end());
    std::swap(ready.front(), arrived.front());
    return true;
}

template <class Container>
void MtGroup<Container>::setContainerObserver(RCShdPtr<MtContainerObserver<Container>> observer) {
    std::lock_guard const guard(_takeLock);
    _containerObserver.swap(observer);
}

template <class Container>
bool MtGroup<Container>::obtainTask(MtTask& task) {
    RCShdPtr<MtContainerObserver<Container>> observer;
    if (!takeTask(task, observer)) return false;
    if (observer) observer->taken(_ready, task);
    return true;
}

template <class Container>
bool MtGroup<Container>::takeTask(MtTask& task, RCShdPtr<MtContainerObserver<Container>>& observer) {
    bool const hasExecuted = !task.isNull();
    // Destroying the work may be slow and may use this group, so it happens before the lock is taken.
    task = {};
    bool leavesTasks = false;
    {
        std::unique_lock taking(_takeLock);
        if (hasExecuted) MtRequestMgr::decrement(_groupTag);
        bool isWoken = false;
        while (!_stopping.load(std::memory_order_relaxed) && _ready.empty())
            isWoken = obtainReadyTasks(taking, isWoken);
        if (_stopping.load(std::memory_order_relaxed)) return false;
        task = std::move(_ready.front());
        _ready.pop();
        observer = _containerObserver;
        bool const hasArrived = isWoken && confirmAwake();
        leavesTasks = hasArrived || !_ready.empty();
    }
    if (leavesTasks && _sleepingWorkers.load(std::memory_order_relaxed) > 0) wakeNextWorker();
    if (isLimited()) makeRoom();
    return true;
}

// Sleeps if no task has arrived. Returns after each wake-up: tasks may be ready then, or have been taken.
// @param isWoken whether this worker has slept since it looked for a task. @returns the same for the time after the call.
template <class Container>
bool MtGroup<Container>::obtainReadyTasks(std::unique_lock<LkLock>& taking, bool isWoken) {
    std::unique_lock lock(_lock);
    if (!_arrived.empty()) {
        std::swap(_ready, _arrived);
        return isWoken;
    }
    if (_stopping.load(std::memory_order_relaxed)) return isWoken;
    if (isWoken) _workerIsWaking = false;
    taking.unlock();
    _sleepingWorkers.fetch_add(1, std::memory_order_relaxed);
    _nonEmpty.wait(lock);
    _sleepingWorkers.fetch_sub(1, std::memory_order_relaxed);
    lock.unlock();
    taking.lock();
    return true;
}

// Called by a woken worker that has a task. @returns whether more have arrived, for which no producer has woken a worker.
template <class Container>
bool MtGroup<Container>::confirmAwake() noexcept {
    std::lock_guard const guard(_lock);
    _workerIsWaking = false;
    return !_arrived.empty();
}

// Called under `_lock`. If true, the caller signals `_nonEmpty` after the unlock.
template <class Container>
bool MtGroup<Container>::needsWorker() noexcept {
    if (_workerIsWaking || _sleepingWorkers.load(std::memory_order_relaxed) == 0) return false;
    _workerIsWaking = true;
    return true;
}

template <class Container>
void MtGroup<Container>::wakeNextWorker() noexcept {
    bool wakes = false;
    {
        std::lock_guard const guard(_lock);
        wakes = needsWorker();
    }
    if (wakes) _nonEmpty.signal();
}

template <class Container>
void MtGroup<Container>::makeRoom() noexcept {
    {
        std::lock_guard const guard(_lock);
        --_numWaiting;
    }
    _nonFull.signal();
}

template <class Container>
void MtGroup<Container>::stopWorkers() {
    {
        std::lock_guard const guard(_lock);
        _stopping = true;
    }
    _nonEmpty.broadcast();
    stop();
}

template <class Container>
void MtGroup<Container>::discardTasks(Container& container) {
    while (!container.empty()) {
        // Removed first: its destructor may add tasks, which are discarded too.
        MtTask const v = std::move(container.front());
        container.pop();
        if (isLimited()) makeRoom();
        MtGroupSource::source.require(
            v.getTag() == _groupTag, "v.getTag() == _groupTag", MtGroupSource::tagOfThisGroup);
        MtRequestMgr::decrement(_groupTag);
    }
}

} // namespace Ko
