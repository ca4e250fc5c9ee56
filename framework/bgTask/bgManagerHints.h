#pragma once

#include "framework/bgTask/bgJob.h"

namespace Ko {

/// The tag of the notifications of the background manager.
struct BgManagerTag {};

extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<BgManagerTag>>;
extern template class KO_FRAMEWORK_API ObChangeManager<BgManagerTag>;
extern template class KO_FRAMEWORK_API ObObserver<BgManagerTag>;

/// A job was added by `addJob`.
class KO_FRAMEWORK_API BgManagerHintNew : public ObHint {
public:
    /// @param job the added job.
    explicit BgManagerHintNew(RCShdPtr<BgJob> job);
    ~BgManagerHintNew() override;
    /// The added job.
    [[nodiscard]] RCShdPtr<BgJob> getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// A job was removed from the list by `stopAndDeleteJob`.
class KO_FRAMEWORK_API BgManagerHintDelete : public ObHint {
public:
    /// @param job the removed job.
    explicit BgManagerHintDelete(RCShdPtr<BgJob> job);
    ~BgManagerHintDelete() override;
    /// The removed job.
    [[nodiscard]] RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// A job failed because the server has no space left. The application can offer the user to free some.
class KO_FRAMEWORK_API BgManagerNotEnoughSpaceHint : public ObHint {
public:
    /// @param job the failed job.
    explicit BgManagerNotEnoughSpaceHint(RCShdPtr<BgJob> job);
    ~BgManagerNotEnoughSpaceHint() override;
    /// The failed job.
    [[nodiscard]] RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// The state or the progress of a job that was added by `addJob` has changed.
class KO_FRAMEWORK_API BgManagerUpdateHint : public ObHint {
public:
    BgManagerUpdateHint();
    ~BgManagerUpdateHint() override;
};

/// The tag of the notifications of subscribers of the manager's list.
struct BgListTag {};

extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<BgListTag>>;
extern template class KO_FRAMEWORK_API ObChangeManager<BgListTag>;
extern template class KO_FRAMEWORK_API ObObserver<BgListTag>;

/// Which jobs a subscriber of the manager's list follows.
enum class BgFollow {
    /// Those that were added by `addJob`.
    Jobs,
    /// Those and the ones that were added by `addUiJob`.
    JobsAndUiJobs
};

/// What has happened to one job in the manager's list.
struct BgJobChange {
    /// Added to the list, or removed; or its state, its progress or a report has changed.
    enum class Kind { Added, Changed, Removed };

    /// What has happened. A job that was added and has changed since is Added.
    Kind kind;
    /// The job; not null.
    RCShdPtr<BgJob> job;
    /// Whether the job was added by `addUiJob`.
    bool isUiJob;
};

/// All that has happened to listed jobs since the last such hint, with one entry per job.
class KO_FRAMEWORK_API BgManagerHintJobs : public ObHint {
public:
    /// @param changes at most one entry per job.
    explicit BgManagerHintJobs(Vector<BgJobChange> changes);
    ~BgManagerHintJobs() override;
    /// The changed jobs, in the order of their first change.
    [[nodiscard]] Vector<BgJobChange> const& getChanges() const noexcept { return _changes; }

private:
    Vector<BgJobChange> _changes;
};

} // namespace Ko
