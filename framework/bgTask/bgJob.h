#pragma once

#include "base/exBase.h"
#include "base/lkLock.h"
#include "base/oPtr.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "framework/bgTask/bgJobState.h"
#include "framework/bgTask/bgJobStatistics.h"
#include "resmgt/liDate.h"
#include "resmgt/lkDeadline.h"
#include "resmgt/lkEvent.h"
#include "resmgt/mtTask.h"

#include <array>
#include <cstdint>
#include <memory>

namespace Ko {

/// A background job: runs a protocol on a worker, and has a state, times, and observers.
///
/// Every job ends: Complete when the protocol returns, Stopped when it returns after a `stop()` or was stopped before it
/// started, Failed when it throws. Any thread, unless noted otherwise. Observers are called without a lock; they may release
/// the last reference to the job.
class KO_FRAMEWORK_API BgJob : public MtTaskImp, public ObSubject<BgJobTag>, public BgProgressReport, public BgJobBase {
public:
    /// @param protocol not null. @returns a job in the state Waiting.
    /// @throws ExNullPtr, and InSingletonEx::ExNotInitialized before the package is initialised.
    [[nodiscard]] static RCShdPtr<BgJob> create(OPtr<BgJobProtocol> protocol);
    ~BgJob() override;

    /// Runs the protocol on this thread if the job is Waiting. Called by the worker. Catches what the protocol throws.
    void execute() override;

protected:
    /// The part of `execute()` that starts the protocol and records the times.
    virtual void runProtocol();

public:
    /// Asks the job to end. Does not wait, but for a protocol whose own `stop()` waits. Without effect on a job that is
    /// Stopping or has ended.
    /// @throws what the `stop()` of the protocol throws; the job is Stopping then.
    virtual void stop();
    /// The times and the progress of the job at present. After the release of the protocol, the progress is the value of
    /// the last notification.
    [[nodiscard]] virtual BgJobStatistics getStatistics();
    /// Whether the protocol was released.
    [[nodiscard]] virtual bool isReleased() const;
    /// Stops the job, waits at most 5 seconds for the end of its execution, and deletes the protocol. Never throws: an
    /// exception from the `stop()` of the protocol is logged.
    ///
    /// Called from inside another function of the protocol, or while another thread stays inside one for those 5 seconds:
    /// the protocol is deleted when that function returns.
    /// @returns whether the protocol was released. False if the execution does not end in time, and at once for a call from
    ///   inside the execution, as by an observer on the worker.
    virtual bool releaseProtocol();

    /// Whether the job has not ended yet: its state is Idle, Waiting, Busy or Stopping.
    [[nodiscard]] bool isRunning() const noexcept;
    /// A copy of the exception that made the job fail; null if there is none or it does not derive from `ExBase`.
    [[nodiscard]] OPtr<ExBase> cloneError() const;
    /// Sets the minimum increase of progress between two notifications, 0 to 1. Default, and for any other value: 0.05.
    void setNotifProgressSlice(float slice);

    /// The present state; never null.
    BgJobState const* getState() const noexcept override { return _state.load(std::memory_order_acquire); }
    void setState(BgJobState const* state) override;
    bool changeState(BgJobState const* expected, BgJobState const* state) override;
    /// Only for the states of the job: other callers cannot keep the protocol from being deleted.
    BgJobProtocol* getProtocol() noexcept override { return _protocol.get(); }
    void reportProgress(int done, int total) override;

private:
    friend class RCShdPtr<BgJob>;
    friend class BgManagerImp;

    class Use;

    explicit BgJob(OPtr<BgJobProtocol> protocol);

    template <class MayChange>
    bool changeStateIf(MayChange mayChange, BgJobState const* state);
    bool takePending(BgJobHintChangeState::JobState_t& state) noexcept;
    void notifyState(RCShdPtr<BgJob> const& self, BgJobHintChangeState::JobState_t state) noexcept;
    void fail(ExBase const* error) noexcept;
    void setOnce(LiDate& date, bool& isSet);
    void requestEnd() noexcept;
    bool releaseUntil(LkDeadline::Time deadline) noexcept;
    bool markReleased() noexcept;
    void deleteUnusedProtocol() noexcept;
    // The name and the type, for messages.
    LiString describe();
    bool isExecuting() const noexcept { return !_endOfJob.isSet(); }

    // Release and acquire: a thread that sees a state sees all earlier writes of the thread that set it.
    std::atomic<BgJobState const*> _state;
    // Set while no thread executes the job.
    LkEvent _endOfJob{"End of job event", true};
    // The value of the last progress notification.
    float _progress = 0.0f;
    float _slice;
    // Guards the two above and all below. No user code is called under it.
    mutable LkLock _lock{"BgJob"};
    bool _notificationsEnabled = false;
    std::shared_ptr<ExBase const> _error;
    OPtr<BgJobProtocol> _protocol;
    LiDate const _submitted;
    LiDate _started;
    LiDate _ended;
    bool _startedSet = false;
    bool _endedSet = false;

    // How many threads execute the job, and how many are inside another function of the protocol.
    int _executions = 0;
    int _uses = 0;
    // From now on no thread enters the protocol; the last one inside deletes it.
    bool _isReleased = false;
    LkEvent _protocolDeleted{"Protocol deleted", false};
    // Whether a thread notifies of a state, and the states it has still to notify of: never more than these.
    bool _isNotifying = false;
    std::uint8_t _numPending = 0;
    std::array<std::uint8_t, 6> _pending{};
    // The last entry of the manager's list that refers to this job, and the number of such entries. Guarded by the manager.
    int _timesListed = 0;
    List<RCShdPtr<BgJob>>::iterator _listed;
};

} // namespace Ko
