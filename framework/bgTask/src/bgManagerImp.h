#pragma once

#include "base/inSingleton.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/mtGroup.h"

#include <queue>

namespace Ko {

class BgManagerImp;
extern template class InSingleton<BgManagerImp>;

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

    struct JobUpdateCbParams;

    BgManagerImp() = default;
    ~BgManagerImp() override;

    void update(ObObserver<BgJobTag> const* observer, ObHints const& hints) override;
    void jobUpdated(JobUpdateCbParams const& update);
    void submit(RCShdPtr<BgJob> const& job, Group& group, bool isFollowed);
    void takeOffList(RCShdPtr<BgJob> const& job) noexcept;

    // It says the same each time.
    RCShdPtr<BgManagerUpdateHint> const _updateHint = RCShdPtr<BgManagerUpdateHint>::create();
    List<RCShdPtr<BgJob>> _jobs;
    Group _general{"BgTasks", 6};
    Group _lowPriority{"Low Priority Local UiBgTasks", 2};
    Group _highPriority{"High Priority Local UiBgTasks", 2};
};

} // namespace Ko
