#pragma once

#include "base/inSingleton.h"
#include "framework/bgTask/bgJobHints.h"
#include "resmgt/liString.h"

namespace Ko {

class BgJobProtocol;
class BgJobState;

/// What a state does to a job.
class KO_FRAMEWORK_API BgJobBase {
public:
    /// Never null. Any thread.
    virtual BgJobState const* getState() const noexcept = 0;
    /// Changes the state and tells the observers, unless the job is in that state already.
    virtual void setState(BgJobState const* state) = 0;
    /// Null once the protocol was released.
    virtual BgJobProtocol* getProtocol() noexcept = 0;
    /// The same as `setState` for a job that is in the state `expected`; nothing for another one.
    /// @returns whether the state was changed.
    virtual bool changeState(BgJobState const* expected, BgJobState const* state) = 0;

protected:
    ~BgJobBase() = default;
};

/// One of the states that a job goes through. States know what a job does next, and keep nothing of it.
class KO_FRAMEWORK_API BgJobState {
public:
    BgJobState(BgJobState const&) = delete;
    BgJobState& operator=(BgJobState const&) = delete;

    /// What a worker does with the job.
    virtual void start(BgJobBase* job) const;
    /// Asks the job to end.
    virtual void stop(BgJobBase* job) const;
    /// The state's name, for logs: "Waiting".
    virtual LiString state() const;
    /// The state as observers are told of it.
    virtual BgJobHintChangeState::JobState_t getHintValue() const noexcept = 0;

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

/// While a job is being made.
class KO_FRAMEWORK_API BgJobIdle final : public BgJobState, public InSingleton<BgJobIdle> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// Until a worker takes the job; stopped, it never starts.
class KO_FRAMEWORK_API BgJobWaiting final : public BgJobState, public InSingleton<BgJobWaiting> {
public:
    void start(BgJobBase* job) const override;
    void stop(BgJobBase* job) const override;
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// While the protocol executes.
class KO_FRAMEWORK_API BgJobBusy final : public BgJobState, public InSingleton<BgJobBusy> {
public:
    void stop(BgJobBase* job) const override;
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// Asked to end, and still executing.
class KO_FRAMEWORK_API BgJobStopping final : public BgJobState, public InSingleton<BgJobStopping> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// Ended because it was asked to.
class KO_FRAMEWORK_API BgJobStopped final : public BgJobState, public InSingleton<BgJobStopped> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// Ended by itself.
class KO_FRAMEWORK_API BgJobComplete final : public BgJobState, public InSingleton<BgJobComplete> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

/// Ended by an exception.
class KO_FRAMEWORK_API BgJobFailed final : public BgJobState, public InSingleton<BgJobFailed> {
public:
    LiString state() const override;
    BgJobHintChangeState::JobState_t getHintValue() const noexcept override;
};

} // namespace Ko
