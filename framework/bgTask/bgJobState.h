#pragma once

#include "base/inSingleton.h"
#include "framework/bgTask/bgJobHints.h"
#include "resmgt/liString.h"

namespace Ko {

class BgJobProtocol;
class BgJobState;

/// The operations of a job that its states use.
class KO_FRAMEWORK_API BgJobBase {
public:
    /// The present state; never null. Any thread.
    virtual BgJobState const* getState() const noexcept = 0;
    /// Changes the state and notifies the observers. Without effect if the job is in that state already.
    virtual void setState(BgJobState const* state) = 0;
    /// The protocol of the job; null after its release.
    virtual BgJobProtocol* getProtocol() noexcept = 0;
    /// Changes the state and notifies the observers if the present state is `expected`.
    /// @returns whether the state was changed.
    virtual bool changeState(BgJobState const* expected, BgJobState const* state) = 0;

protected:
    ~BgJobBase() = default;
};

/// One of the states of jobs: decides what `start` and `stop` do to a job. Has no data of its own.
class KO_FRAMEWORK_API BgJobState {
public:
    BgJobState(BgJobState const&) = delete;
    BgJobState& operator=(BgJobState const&) = delete;

    /// Executes the job if it is Waiting. Called by the worker.
    virtual void start(BgJobBase* job) const;
    /// Asks the job to end, if it has not ended.
    virtual void stop(BgJobBase* job) const;
    /// The name of the state, for logs: "Waiting".
    [[nodiscard]] virtual LiString state() const;
    /// The value of the state in notifications.
    [[nodiscard]] virtual BgJobHintChangeState::JobState_t getHintValue() const noexcept = 0;

protected:
    BgJobState() = default;
    virtual ~BgJobState();
};

class BgJobIdle;
class BgJobWaiting;
class BgJobBusy;
class BgJobStopping;
class BgJobStopped;
class BgJobComplete;
class BgJobFailed;

extern template class KO_FRAMEWORK_API InSingleton<BgJobIdle>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobWaiting>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobBusy>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobStopping>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobStopped>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobComplete>;
extern template class KO_FRAMEWORK_API InSingleton<BgJobFailed>;

/// The state during construction.
class KO_FRAMEWORK_API BgJobIdle final : public BgJobState, public InSingleton<BgJobIdle> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The job waits for a worker. If it is stopped now, it never starts.
class KO_FRAMEWORK_API BgJobWaiting final : public BgJobState, public InSingleton<BgJobWaiting> {
public:
    void start(BgJobBase* job) const override;
    void stop(BgJobBase* job) const override;
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The protocol executes.
class KO_FRAMEWORK_API BgJobBusy final : public BgJobState, public InSingleton<BgJobBusy> {
public:
    /// Ends a job whose protocol has done its work: Complete, or Stopped if it was asked to end.
    static void end(BgJobBase* job);
    void stop(BgJobBase* job) const override;
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The job was asked to end, and the protocol still executes.
class KO_FRAMEWORK_API BgJobStopping final : public BgJobState, public InSingleton<BgJobStopping> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The job has ended on request.
class KO_FRAMEWORK_API BgJobStopped final : public BgJobState, public InSingleton<BgJobStopped> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The protocol has returned without a request to end.
class KO_FRAMEWORK_API BgJobComplete final : public BgJobState, public InSingleton<BgJobComplete> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// The protocol has thrown an exception.
class KO_FRAMEWORK_API BgJobFailed final : public BgJobState, public InSingleton<BgJobFailed> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

} // namespace Ko
