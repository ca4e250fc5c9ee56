#pragma once

#include "framework/bgTask/bgJob.h"

namespace Ko {

/// The tag of what the background manager sends to its observers, on the application thread.
struct BgManagerTag {};

extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<BgManagerTag>>;
extern template class KO_FRAMEWORK_API ObChangeManager<BgManagerTag>;
extern template class KO_FRAMEWORK_API ObObserver<BgManagerTag>;

/// A job was added by `addJob`.
class KO_FRAMEWORK_API BgManagerHintNew : public ObHint {
public:
    /// The job that was added:
    explicit BgManagerHintNew(RCShdPtr<BgJob> job);
    ~BgManagerHintNew() override;
    RCShdPtr<BgJob> getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// A job was taken off the list by `stopAndDeleteJob`.
class KO_FRAMEWORK_API BgManagerHintDelete : public ObHint {
public:
    /// The job that was taken off:
    explicit BgManagerHintDelete(RCShdPtr<BgJob> job);
    ~BgManagerHintDelete() override;
    RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// A job failed because the server has no space left; the user could be offered to make some.
class KO_FRAMEWORK_API BgManagerNotEnoughSpaceHint : public ObHint {
public:
    /// The job that has failed:
    explicit BgManagerNotEnoughSpaceHint(RCShdPtr<BgJob> job);
    ~BgManagerNotEnoughSpaceHint() override;
    RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }

private:
    RCShdPtr<BgJob> _job;
};

/// A job that was added by `addJob` has got another state or come further.
class KO_FRAMEWORK_API BgManagerUpdateHint : public ObHint {
public:
    BgManagerUpdateHint();
    ~BgManagerUpdateHint() override;
};

} // namespace Ko
