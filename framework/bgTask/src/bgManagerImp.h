#pragma once

#include "base/evEventManager.h"
#include "base/inSingleton.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/src/bgFollowers.h"
#include "framework/bgTask/src/bgOrder.h"
#include "framework/bgTask/src/bgStopper.h"

namespace Ko {

class BgManagerImp;
extern template class InSingleton<BgManagerImp>;

/// The one manager.
class BgManagerImp final : public BgManager, public ObObserver<BgJobTag> {
public:
    using WhenEnded = std::function<void(Vector<RCShdPtr<BgJob>> const& unended)>;

    void addJob(RCShdPtr<BgJob> job) override;
    RCShdPtr<BgJob> addJob(OPtr<BgJobProtocol> protocol) override;
    void addUiJob(RCShdPtr<BgJob> job, unsigned priority) override;
    RCShdPtr<BgJob> addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) override;
    void stopAndDeleteJob(RCShdPtr<BgJob> job) override;
    List<RCShdPtr<BgJob>> getJobs() override;
    void stopAllJobs() override;

    /// Implements the functions of the base class that are not virtual.
    void addJob(RCShdPtr<BgJob> const& job, BgAfter const* after);
    void addUiJob(RCShdPtr<BgJob> const& job, unsigned priority, BgAfter const* after);
    void stopAllJobs(std::chrono::milliseconds grace, WhenEnded whenEnded);
    ObSubscription follow(std::function<void(BgManagerHintJobs const&)> callable, BgFollow follow);
    bool isUiJob(BgJob const& job) const noexcept;
    BgWorkers* workersOf(BgJob const& job) const noexcept;
    BgOrder& order() noexcept { return _order; }
    BgFollowers& followers() noexcept { return _followers; }

    /// Queues a job that has waited for others.
    static void queue(RCShdPtr<BgJob> const& job);
    /// Queues a job again that was paused when its turn came.
    static void queueAgain(RCShdPtr<BgJob> const& job);
    /// Stops the protocol of a job on another thread. @param limit the end of its grace period at the latest.
    static void stopElsewhere(RCShdPtr<BgJob> const& job, LkDeadline::Time limit);
    /// Posts an event with the manager, if it still exists then.
    template <class Request>
    static void postToManager(Request request);

private:
    friend class InSingleton<BgManagerImp>;

    using Jobs = List<RCShdPtr<BgJob>>;

    struct JobUpdateCbParams;

    BgManagerImp() = default;
    ~BgManagerImp() override;

    void update(ObObserver<BgJobTag> const* observer, ObHints const& hints) override;
    void jobUpdated(JobUpdateCbParams const& update);
    void submit(RCShdPtr<BgJob> const& job, BgWorkers& group, BgAfter const* after);
    void waitForAll(Vector<RCShdPtr<BgJob>> const& jobs, LkDeadline::Time deadline, WhenEnded const& whenEnded);
    void stopObserving(BgJob& job);
    void remove(RCShdPtr<BgJob> const& job) noexcept;
    template <class Step>
    void forEachJob(Step step) noexcept;
    RCShdPtr<BgJob> visitNext() noexcept;
    RCShdPtr<BgJob> firstJob() noexcept;
    bool removeFromList(BgJob& job) noexcept;
    void eraseEntry(Jobs::iterator entry) noexcept;
    void abandon(RCShdPtr<BgJob> const& job) noexcept;
    void dropEndedJobs() noexcept;
    void logUnendedJobs() noexcept;

    // Shared by all notifications: it carries no data.
    RCShdPtr<BgManagerUpdateHint> const _updateHint = RCShdPtr<BgManagerUpdateHint>::create();
    // Guards the list, the places of the jobs in it, and the next job of `forEachJob`. No user code is called under it.
    mutable LkLock _lock{"BgManager"};
    Jobs _jobs;
    Jobs::iterator _nextToVisit = _jobs.end();
    // Jobs that did not end when all were stopped. Only used by the application thread.
    Jobs _abandoned;
    std::uint64_t _lastNumber = 0;
    BgFollowers _followers;
    BgWorkers _general{"BgTasks", 6};
    BgWorkers _lowPriority{"Low Priority Local UiBgTasks", 2};
    BgWorkers _highPriority{"High Priority Local UiBgTasks", 2};
    BgOrder _order;
    BgStopper _stopper;
};

template <class Request>
void BgManagerImp::postToManager(Request request) {
    EvEventManager::getInstance().postRequest([request = std::move(request)]() mutable {
        using Singleton = InSingleton<BgManagerImp>;
        if (Singleton::isInitialized()) request(Singleton::getInstance());
    });
}

} // namespace Ko
