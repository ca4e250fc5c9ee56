#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/obObserver.h"
#include "resmgt/obSubject.h"

namespace Ko {

class BgJob;

/// The tag of what jobs send to their observers: `BgJobHintChangeState` and `BgJobHintProgress`, one in a notification.
///
/// They come on the thread that makes the change: the worker, or the one that stops the job.
struct BgJobTag {};

extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<BgJobTag>>;
extern template class KO_FRAMEWORK_API ObChangeManager<BgJobTag>;
extern template class KO_FRAMEWORK_API ObObserver<BgJobTag>;

/// A job has got another state.
///
/// A job's changes of state are told in the order in which they happened, one after the other. Where one happens while
/// another one is still being told, the thread that tells goes on with it.
class KO_FRAMEWORK_API BgJobHintChangeState : public ObHint {
public:
    /// The states, named as their classes: `BgJobIdle` and so on. 3 and 4 stay unassigned.
    enum JobState_t { Idle = 0, Waiting = 1, Busy = 2, Stopping = 5, Stopped = 6, Complete = 7, Failed = 8 };

    BgJobHintChangeState();
    /// @param state the one that the job has got.
    BgJobHintChangeState(RCShdPtr<BgJob> job, JobState_t state);
    ~BgJobHintChangeState() override;

    /// What has happened, and to which job; null in a hint that was made without one:
    RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }
    JobState_t getJobState() const noexcept { return _state; }
    bool isJobComplete() const noexcept { return _state == Complete; }
    bool hasJobFailed() const noexcept { return _state == Failed; }

private:
    RCShdPtr<BgJob> _job;
    JobState_t _state = Idle;
};

/// A job has come further by at least its slice, has reached its end, or has gone back.
class KO_FRAMEWORK_API BgJobHintProgress : public ObHint {
public:
    BgJobHintProgress();
    /// @param progress from 0 to 1.
    BgJobHintProgress(RCShdPtr<BgJob> job, float progress);
    ~BgJobHintProgress() override;

    /// How far the job is, from 0 to 1; the job is null in a hint that was made without one:
    RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }
    float getProgress() const noexcept { return _progress; }

private:
    RCShdPtr<BgJob> _job;
    float _progress = 0.0f;
};

} // namespace Ko
