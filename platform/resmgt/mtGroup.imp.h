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
    discardTasks();
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
        while (_container.size() >= _capacity) {
            ++_waitingProducers;
            _nonFull.wait(lock);
            --_waitingProducers;
        }
        _container.push(MtTask(std::move(imp), _groupTag));
        // Counted under the lock, which has brought the counter into the cache of this processor.
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
        std::lock_guard const guard(_lock);
        auto& sequence = MtQueueAccess<Container>::sequenceOf(_container);
        auto const place = std::find_if(
            sequence.begin(), sequence.end(), [&](MtTask const& task) { return isBehind(*task.getImp()); });
        sequence.insert(place, MtTask(std::move(imp), _groupTag));
        MtRequestMgr::increment(_groupTag);
        wakes = needsWorker();
    }
    if (wakes) _nonEmpty.signal();
}

template <class Container>
bool MtGroup<Container>::moveToFront(MtTaskImp const& imp) noexcept {
    std::lock_guard const guard(_lock);
    auto& sequence = MtQueueAccess<Container>::sequenceOf(_container);
    auto const found =
        std::find_if(sequence.begin(), sequence.end(), [&imp](MtTask const& task) { return task.getImp() == &imp; });
    if (found == sequence.end()) return false;
    std::rotate(sequence.begin(), found, std::next(found));
    return true;
}

template <class Container>
void MtGroup<Container>::setContainerObserver(RCShdPtr<MtContainerObserver<Container>> observer) {
    std::lock_guard const guard(_lock);
    _containerObserver.swap(observer);
}

template <class Container>
bool MtGroup<Container>::obtainTask(MtTask& task) {
    RCShdPtr<MtContainerObserver<Container>> observer;
    if (!takeTask(task, observer)) return false;
    if (observer) observer->taken(_container, task);
    return true;
}

template <class Container>
bool MtGroup<Container>::takeTask(MtTask& task, RCShdPtr<MtContainerObserver<Container>>& observer) {
    bool const hasExecuted = !task.isNull();
    // Destroying the work may be slow and may use this group, so it happens before the lock is taken.
    task = {};
    bool wakes = false;
    bool makesRoom = false;
    {
        std::unique_lock lock(_lock);
        if (hasExecuted) MtRequestMgr::decrement(_groupTag);
        while (!_stopping && _container.empty()) {
            ++_sleepingWorkers;
            _nonEmpty.wait(lock);
            --_sleepingWorkers;
            _workerIsWaking = false;
        }
        if (_stopping) return false;
        task = std::move(_container.front());
        _container.pop();
        observer = _containerObserver;
        wakes = !_container.empty() && needsWorker();
        makesRoom = _waitingProducers > 0;
    }
    if (wakes) _nonEmpty.signal();
    if (makesRoom) _nonFull.signal();
    return true;
}

// Called under the lock. If true, the caller signals `_nonEmpty` after the unlock.
template <class Container>
bool MtGroup<Container>::needsWorker() noexcept {
    if (_workerIsWaking || _sleepingWorkers == 0) return false;
    _workerIsWaking = true;
    return true;
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
void MtGroup<Container>::discardTasks() {
    while (!_container.empty()) {
        // Removed first: its destructor may add tasks, which are discarded too.
        MtTask const v = std::move(_container.front());
        _container.pop();
        MtGroupSource::source.require(
            v.getTag() == _groupTag, "v.getTag() == _groupTag", MtGroupSource::tagOfThisGroup);
        MtRequestMgr::decrement(_groupTag);
    }
}

} // namespace Ko
