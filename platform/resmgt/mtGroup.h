#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/lkCondVar.h"
#include "resmgt/mtTask.h"
#include "resmgt/mtThreadPool.h"

#include <cstddef>
#include <limits>
#include <queue>

namespace Ko {

/// Told of every task that a worker takes out of a group's queue.
template <class Container>
class MtContainerObserver : public RCBase {
public:
    /// Called on the worker, before it executes the task. Must not throw.
    /// @param container tells which one; other threads change it meanwhile.
    virtual void taken(Container const& container, MtTask const& task) = 0;
};

/// A queue of tasks and the workers that execute them, first come, first served.
///
/// Tasks may be added from any thread. The destructor returns when the workers have ended; what is still waiting then is
/// not executed. To have all executed first, call `waitForRequests()`.
///
/// The header that introduces a container declares the instantiation, and one source that includes `mtGroup.imp.h` makes
/// it.
template <class Container>
class MtGroup : public MtThreadPool {
public:
    /// The workers start at once. @throws ExAssertionFailed unless there is at least one.
    MtGroup(LiString name, int numThreads) : MtGroup(std::move(name), numThreads, unlimited) {}
    /// @param containerSize how many tasks may wait; whoever adds one more waits as well.
    MtGroup(LiString name, int numThreads, std::ptrdiff_t containerSize);
    ~MtGroup() override;

    /// @throws ExNullPtr for a null pointer.
    void add(RCShdPtr<MtTaskImp> imp);
    /// How many tasks wait or are being executed.
    std::uint32_t getNumRequests() const noexcept { return MtRequestMgr::getCount(_groupTag); }
    /// Returns when no task waits or is being executed.
    void waitForRequests() const noexcept { MtRequestMgr::waitForZero(_groupTag); }
    /// A null pointer stands for none.
    void setContainerObserver(RCShdPtr<MtContainerObserver<Container>> observer);

protected:
    bool obtainTask(MtTask& task) override;

private:
    static constexpr std::ptrdiff_t unlimited = std::numeric_limits<std::ptrdiff_t>::max();

    bool takeTask(MtTask& task, RCShdPtr<MtContainerObserver<Container>>& observer);
    bool needsWorker() noexcept;
    void stopWorkers();
    void discardTasks();

    Container _container;
    RCShdPtr<MtContainerObserver<Container>> _containerObserver;
    mutable LkLock _lock{"MtGroup"};
    LkCondVar _nonEmpty{"Non-Empty Cond Var"};
    LkCondVar _nonFull{"Non-Full Cond Var"};
    std::size_t _capacity;
    std::atomic<std::uint32_t> _producers{1};
    MtRequestMgr _requestMgr;
    MtGroupTag _groupTag;

    bool _stopping = false;
    int _waitingProducers = 0;
    // Workers are woken one after the other: the one that comes awake wakes the next if tasks are left. A producer that is
    // faster than its workers then signals once, not at each task.
    int _sleepingWorkers = 0;
    bool _workerIsWaking = false;
};

extern template class KO_RESMGT_API MtGroup<std::queue<MtTask>>;

} // namespace Ko
