#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/obObserver.h"
#include "resmgt/obSubject.h"

namespace Ko {

class BgJob;

/// The tag of the notifications of jobs. Each holds one hint: `BgJobHintChangeState` or `BgJobHintProgress`.
///
/// Observers are notified on the thread that makes the change: the worker, or the thread that stops the job.
struct BgJobTag {};

extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<BgJobTag>>;
extern template class KO_FRAMEWORK_API ObChangeManager<BgJobTag>;
extern template class KO_FRAMEWORK_API ObObserver<BgJobTag>;

/// The state of a job has changed.
///
/// The changes of one job are notified in the order in which they happened, one after the other. If one happens during the
/// notification of another, the thread that is notifying goes on with it. So an observer must not wait in `update` until
/// any observer is notified of a later state of the same job: that notification starts only after `update` has returned.
class KO_FRAMEWORK_API BgJobHintChangeState : public ObHint {
public:
    /// The states, named after their classes: `BgJobIdle` and so on. 3 and 4 stay unassigned.
    enum JobState_t { Idle = 0, Waiting = 1, Busy = 2, Stopping = 5, Stopped = 6, Complete = 7, Failed = 8 };

    /// A hint without a job, in the state Idle.
    BgJobHintChangeState();
    /// @param state the new state.
    BgJobHintChangeState(RCShdPtr<BgJob> job, JobState_t state);
    ~BgJobHintChangeState() override;

    /// The job; null in a hint made without a job.
    [[nodiscard]] RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }
    /// The new state.
    [[nodiscard]] JobState_t getJobState() const noexcept { return _state; }
    /// Whether the new state is Complete.
    [[nodiscard]] bool isJobComplete() const noexcept { return _state == Complete; }
    /// Whether the new state is Failed.
    [[nodiscard]] bool hasJobFailed() const noexcept { return _state == Failed; }

private:
    RCShdPtr<BgJob> _job;
    JobState_t _state = Idle;
};

/// The progress of a job has increased by at least its slice, has reached 1, or has decreased.
class KO_FRAMEWORK_API BgJobHintProgress : public ObHint {
public:
    /// A hint without a job, with the progress 0.
    BgJobHintProgress();
    /// @param progress from 0 to 1.
    BgJobHintProgress(RCShdPtr<BgJob> job, float progress);
    ~BgJobHintProgress() override;

    /// The job; null in a hint made without a job.
    [[nodiscard]] RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }
    /// The progress, from 0 to 1.
    [[nodiscard]] float getProgress() const noexcept { return _progress; }

private:
    RCShdPtr<BgJob> _job;
    float _progress = 0.0f;
};

} // namespace Ko
