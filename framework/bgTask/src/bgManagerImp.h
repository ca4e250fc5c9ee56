#pragma once

#include "base/inSingleton.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/mtGroup.h"

#include <queue>

namespace Ko {

class BgManagerImp;
extern template class InSingleton<BgManagerImp>;

/// The one manager.
class BgManagerImp final : public BgManager, public ObObserver<BgJobTag> {
public:
    void addJob(RCShdPtr<BgJob> job) override;
    RCShdPtr<BgJob> addJob(OPtr<BgJobProtocol> protocol) override;
    void addUiJob(RCShdPtr<BgJob> job, unsigned priority) override;
    RCShdPtr<BgJob> addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) override;
    void stopAndDeleteJob(RCShdPtr<BgJob> job) override;
    List<RCShdPtr<BgJob>> getJobs() override;
    void stopAllJobs() override;

private:
    friend class InSingleton<BgManagerImp>;

    using Group = MtGroup<std::queue<MtTask>>;
    using Jobs = List<RCShdPtr<BgJob>>;

    struct JobUpdateCbParams;

    BgManagerImp() = default;
    ~BgManagerImp() override;

    void update(ObObserver<BgJobTag> const* observer, ObHints const& hints) override;
    void jobUpdated(JobUpdateCbParams const& update);
    void submit(RCShdPtr<BgJob> const& job, Group& group, bool isObserved);
    template <class Step>
    void forEachJob(Step step) noexcept;
    RCShdPtr<BgJob> visitNext() noexcept;
    RCShdPtr<BgJob> firstJob() noexcept;
    void removeFromList(BgJob& job) noexcept;
    void eraseEntry(Jobs::iterator entry) noexcept;
    void abandon(RCShdPtr<BgJob> const& job) noexcept;
    void dropEndedJobs() noexcept;
    void logUnendedJobs() noexcept;

    // Shared by all notifications: it carries no data.
    RCShdPtr<BgManagerUpdateHint> const _updateHint = RCShdPtr<BgManagerUpdateHint>::create();
    // Guards the list, the places of the jobs in it, and the next job of `forEachJob`. No user code is called under it.
    LkLock _lock{"BgManager"};
    Jobs _jobs;
    Jobs::iterator _nextToVisit = _jobs.end();
    // Jobs that did not end when all were stopped. Only used by the application thread.
    Jobs _abandoned;
    Group _general{"BgTasks", 6};
    Group _lowPriority{"Low Priority Local UiBgTasks", 2};
    Group _highPriority{"High Priority Local UiBgTasks", 2};
};

} // namespace Ko
