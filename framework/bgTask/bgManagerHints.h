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

} // namespace Ko
