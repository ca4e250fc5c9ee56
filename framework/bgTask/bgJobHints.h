#pragma once

#include "framework/bgTask/bgJobReport.h"
#include "framework/frameworkApi.h"
#include "resmgt/obObserver.h"
#include "resmgt/obSubject.h"

namespace Ko {

class BgJob;

/// The tag of the notifications of jobs. Each holds one hint, `BgJobHintChangeState` or `BgJobHintProgress`, or hints of the
/// classes that derive from `BgJobHintReport`.
///
/// Observers are notified of states and progress on the thread that makes the change: the worker, or the thread that stops
/// the job. They are notified of reports on the application thread, by an event that brings all reports since the last one:
/// a job that reports a million times a second does not fill the queue of events. Reports may arrive before a change of the
/// state that preceded them, but never after the end of the job that followed them.
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

/// Base of the hints of reports, which are sent on the application thread.
class KO_FRAMEWORK_API BgJobHintReport : public ObHint {
public:
    ~BgJobHintReport() override;
    /// The job; not null.
    [[nodiscard]] RCShdPtr<BgJob> const& getJob() const noexcept { return _job; }

protected:
    /// @param job not null.
    explicit BgJobHintReport(RCShdPtr<BgJob> job);

private:
    RCShdPtr<BgJob> _job;
};

/// A job has reported messages: the first hundred since the last hint, and the number of the others.
class KO_FRAMEWORK_API BgJobHintMessage : public BgJobHintReport {
public:
    /// @param numOmitted how many messages followed those that are passed.
    BgJobHintMessage(RCShdPtr<BgJob> job, Vector<BgMessage> messages, std::size_t numOmitted);
    ~BgJobHintMessage() override;

    /// The messages, in the order of the reports.
    [[nodiscard]] Vector<BgMessage> const& getMessages() const noexcept { return _messages; }
    /// How many messages followed that are not kept.
    [[nodiscard]] std::size_t getNumOmitted() const noexcept { return _numOmitted; }

private:
    Vector<BgMessage> _messages;
    std::size_t _numOmitted;
};

/// A job has begun another phase of its work: the last one that it has reported.
class KO_FRAMEWORK_API BgJobHintPhase : public BgJobHintReport {
public:
    /// @param phase the text for display.
    BgJobHintPhase(RCShdPtr<BgJob> job, LiString phase);
    ~BgJobHintPhase() override;
    /// The text for display.
    [[nodiscard]] LiString const& getPhase() const noexcept { return _phase; }

private:
    LiString _phase;
};

/// A job has reported units or unknown progress: the last report.
class KO_FRAMEWORK_API BgJobHintUnits : public BgJobHintReport {
public:
    /// @param units without a total if the progress is unknown.
    BgJobHintUnits(RCShdPtr<BgJob> job, BgUnits units);
    ~BgJobHintUnits() override;
    /// The units; without a total if the progress is unknown.
    [[nodiscard]] BgUnits const& getUnits() const noexcept { return _units; }

private:
    BgUnits _units;
};

/// A job was paused or resumed. Its end resumes it.
class KO_FRAMEWORK_API BgJobHintPause : public BgJobHintReport {
public:
    /// @param isPaused whether the job is paused now.
    BgJobHintPause(RCShdPtr<BgJob> job, bool isPaused);
    ~BgJobHintPause() override;
    /// Whether the job is paused now.
    [[nodiscard]] bool isPaused() const noexcept { return _isPaused; }

private:
    bool _isPaused;
};

} // namespace Ko
