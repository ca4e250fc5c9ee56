#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/lkCondVar.h"
#include "resmgt/mtTask.h"
#include "resmgt/mtThreadPool.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <queue>

namespace Ko {

/// Observes a group: called for every task that a worker takes from the queue.
template <class Container>
class MtContainerObserver : public RCBase {
public:
    /// Called on the worker, before it executes the task. Must not throw.
    /// @param container identifies the group. Must not be read: other threads change it at the same time.
    virtual void taken(Container const& container, MtTask const& task) = 0;
};

/// A first-in-first-out queue of tasks, and the workers that execute them.
///
/// Any thread may add tasks. The destructor waits until the workers have ended, and discards the tasks that still wait in the
/// queue. To have all tasks executed first, call `waitForRequests()`.
///
/// The header that introduces a container declares the instantiation; one source that includes `mtGroup.imp.h` defines it.
template <class Container>
class MtGroup : public MtThreadPool {
public:
    /// Starts the workers. @throws ExAssertionFailed unless there is at least one, and ExInternalError if the system cannot
    ///   start them.
    MtGroup(LiString name, int numThreads) : MtGroup(std::move(name), numThreads, unlimited) {}
    /// Starts the workers of a queue of limited size.
    /// @param containerSize capacity of the queue; while it is full, `add()` waits.
    MtGroup(LiString name, int numThreads, std::ptrdiff_t containerSize);
    ~MtGroup() override;

    /// Appends a task to the queue. @throws ExNullPtr for a null pointer.
    void add(RCShdPtr<MtTaskImp> imp);
    /// Inserts a task ahead of the first waiting one for which `isBehind` holds; at the end if there is none. Also if the queue
    /// is full. @param isBehind is called under the lock of the group. @throws ExNullPtr for a null pointer.
    void addAhead(RCShdPtr<MtTaskImp> imp, std::function<bool(MtTaskImp const& waiting)> const& isBehind);
    /// Moves a waiting task to the front of the queue. @returns whether the task waits.
    bool moveToFront(MtTaskImp const& imp) noexcept;
    /// The number of tasks that wait or are being executed.
    [[nodiscard]] std::uint32_t getNumRequests() const noexcept { return MtRequestMgr::getCount(_groupTag); }
    /// Waits until no task waits or is being executed.
    void waitForRequests() const noexcept { MtRequestMgr::waitForZero(_groupTag); }
    /// Sets the observer of the group; null for none.
    void setContainerObserver(RCShdPtr<MtContainerObserver<Container>> observer);

protected:
    bool obtainTask(MtTask& task) override;

private:
    static constexpr std::ptrdiff_t unlimited = std::numeric_limits<std::ptrdiff_t>::max();

    bool takeTask(MtTask& task, RCShdPtr<MtContainerObserver<Container>>& observer);
    bool obtainReadyTasks(std::unique_lock<LkLock>& taking, bool isWoken);
    bool confirmAwake() noexcept;
    bool isLimited() const noexcept { return _capacity != std::numeric_limits<std::size_t>::max(); }
    bool needsWorker() noexcept;
    void wakeNextWorker() noexcept;
    void makeRoom() noexcept;
    void stopWorkers();
    void discardTasks(Container& container);

    // The tasks that wait are `_ready`, then `_arrived`. Workers use the former and producers the latter, so that they seldom
    // wait for each other; a worker that finds no ready task swaps the two. `_takeLock` is taken before `_lock`.
    mutable LkLock _takeLock{"MtGroup ready"};
    Container _ready;
    RCShdPtr<MtContainerObserver<Container>> _containerObserver;
    // On cache lines of its own, which the producers write.
    alignas(64) mutable LkLock _lock{"MtGroup"};
    Container _arrived;
    // The number of tasks that wait; only counted in a group with a limit.
    std::size_t _numWaiting = 0;
    LkCondVar _nonEmpty{"Non-Empty Cond Var"};
    LkCondVar _nonFull{"Non-Full Cond Var"};
    std::size_t _capacity;
    std::atomic<std::uint32_t> _producers{1};
    MtRequestMgr _requestMgr;
    MtGroupTag _groupTag;

    // Workers wake one after the other: each wakes the next one if tasks are left, when it has taken one or sleeps again. So a
    // producer that is faster than its workers signals once, not for each task.
    bool _workerIsWaking = false;
    // Changed under `_lock`. Relaxed: a worker that finds ready tasks has taken `_lock` after each worker that went to sleep
    // without them, or has `_takeLock` from one that did; and a stop wakes all that sleep.
    std::atomic<int> _sleepingWorkers{0};
    std::atomic<bool> _stopping{false};
};

extern template class KO_RESMGT_API MtGroup<std::queue<MtTask>>;

} // namespace Ko
