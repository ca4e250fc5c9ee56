#pragma once

#include "base/exBase.h"
#include "base/lkLock.h"
#include "base/oPtr.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "framework/bgTask/bgJobState.h"
#include "framework/bgTask/bgJobStatistics.h"
#include "resmgt/liDate.h"
#include "resmgt/lkEvent.h"
#include "resmgt/mtTask.h"

#include <array>
#include <cstdint>

namespace Ko {

/// A background job: a protocol on its way through a worker, with a state, times, and observers.
///
/// It always ends: Complete when the protocol returns, Stopped when it returns after a `stop()` or was stopped before it
/// started, Failed when it throws. Any thread, unless something else is said; observers are called without a lock.
class KO_FRAMEWORK_API BgJob : public MtTaskImp, public ObSubject<BgJobTag>, public BgProgressReport, public BgJobBase {
public:
    /// @param protocol not null. @returns a job that waits.
    /// @throws ExNullPtr, and InSingletonEx::ExNotInitialized before the package is initialised.
    static RCShdPtr<BgJob> create(OPtr<BgJobProtocol> protocol);
    ~BgJob() override;

    /// Runs the protocol on this thread, if the job waits. Called by the worker; throws nothing of what the protocol does.
    void execute() override;

protected:
    /// The part of `execute()` that starts the protocol and notes the times.
    virtual void runProtocol();

public:
    /// Asks the job to end, without waiting for it. What ends, or has ended, goes on as it does.
    virtual void stop();
    /// How far the job is now. Once the protocol was released, the progress is what observers were told last.
    virtual BgJobStatistics getStatistics();
    /// Whether the protocol was deleted.
    virtual bool isReleased() const;
    /// Stops the job, waits for its end, at most 5 seconds, and deletes the protocol. Not from an observer of the job.
    /// @returns false when the job did not end; it still has its protocol then.
    virtual bool releaseProtocol();

    /// Whether the job still has an end before it: Idle, Waiting, Busy or Stopping.
    bool isRunning() const noexcept;
    /// A copy of what the protocol threw; null if it threw nothing, or nothing that derives from `ExBase`.
    OPtr<ExBase> cloneError() const;
    /// By how much progress has to rise for observers to be told, from 0 to 1; something else stands for 0.05, as does
    /// nothing.
    void setNotifProgressSlice(float slice);

    BgJobState const* getState() const noexcept override { return _state.load(std::memory_order_acquire); }
    void setState(BgJobState const* state) override;
    bool changeState(BgJobState const* expected, BgJobState const* state) override;
    /// For the job's states; others would have to keep the job from being released.
    BgJobProtocol* getProtocol() noexcept override { return _protocol.get(); }
    void reportProgress(int done, int total) override;

private:
    friend class RCShdPtr<BgJob>;
    friend class BgManagerImp;

    class Use;

    explicit BgJob(OPtr<BgJobProtocol> protocol);

    template <class MayChange>
    bool changeStateIf(MayChange mayChange, BgJobState const* state);
    bool takeUntold(BgJobHintChangeState::JobState_t& state) noexcept;
    void tell(BgJobHintChangeState::JobState_t state) noexcept;
    void fail(ExBase const* error) noexcept;
    void note(LiDate& date, bool& isSet);
    bool deleteUnusedProtocol();

    // Release and acquire: whoever sees a state sees what its thread did before.
    std::atomic<BgJobState const*> _state;
    LkEvent _endOfJob{"End of job event", true};
    // What observers were told last.
    float _progress = 0.0f;
    float _slice;
    // For all below and the two above; nobody is called under it.
    mutable LkLock _lock{"BgJob"};
    bool _notificationsEnabled = false;
    OPtr<ExBase> _error;
    OPtr<BgJobProtocol> _protocol;
    LiDate const _submitted;
    LiDate _started;
    LiDate _ended;
    bool _startedSet = false;
    bool _endedSet = false;

    // How many threads are inside the protocol; the event is set while there are none. Guarded by the lock.
    int _uses = 0;
    // Whether a thread is telling a state, and those that it has still to tell: no job has more before it than these.
    // Guarded by the lock.
    bool _isTelling = false;
    std::uint8_t _numUntold = 0;
    std::array<std::uint8_t, 6> _untold{};
    // Where the manager's list refers to this job, the last time, and how many times it does; the manager's alone.
    int _timesListed = 0;
    List<RCShdPtr<BgJob>>::iterator _listed;
};

} // namespace Ko
