#pragma once

#include "base/exBase.h"
#include "base/lkLock.h"
#include "base/oPtr.h"
#include "framework/bgTask/bgCompletion.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "framework/bgTask/bgJobState.h"
#include "framework/bgTask/bgJobStatistics.h"
#include "framework/bgTask/bgJobTimes.h"
#include "resmgt/liDate.h"
#include "resmgt/lkDeadline.h"
#include "resmgt/lkEvent.h"
#include "resmgt/mtTask.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <queue>
#include <string_view>
#include <typeinfo>

namespace Ko {

template <class Container>
class MtGroup;

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

    /// Asks the job to end, as `stop()`, but never waits: if the job is Busy, `continueExecution()` is false when this returns,
    /// and a thread of the manager calls the `stop()` of the protocol. That call counts as one inside the protocol.
    void requestStop() noexcept;
    /// Holds the job until `resume()` or its end: if it is Waiting, no worker starts it, and it keeps its place in the queue;
    /// if it is Busy, the next `continueExecution()` waits. Without effect on a job that is Stopping, has ended or is paused.
    void pause();
    /// Ends a pause. Without effect on a job that is not paused.
    void resume();
    /// Whether the job is paused.
    [[nodiscard]] bool isPaused() const noexcept;

    /// The name of the protocol, also after its release.
    [[nodiscard]] LiString getName() const;
    /// The type of the protocol, also after its release.
    [[nodiscard]] LiString getType() const;
    /// When the job was made, started and ended.
    [[nodiscard]] BgJobTimes getTimes() const;
    /// An estimate of the time that the job still needs; nothing while there is none, and unless the job is Busy.
    [[nodiscard]] std::optional<BgJobTimes::Duration> getRemaining() const;
    /// The last phase that the protocol reported; empty if there is none.
    [[nodiscard]] LiString getPhase() const;
    /// The last units that the protocol reported; without a unit if there are none.
    [[nodiscard]] BgUnits getUnits() const;
    /// Why the job has failed, also if the exception does not derive from `ExBase`, or which other job kept it from running.
    /// Empty for any other job.
    [[nodiscard]] LiString getReason() const;
    /// The result that the protocol has set, shared with the job; null if there is none or it has another type. Exists before
    /// the job is Complete.
    template <class Result>
    [[nodiscard]] std::shared_ptr<Result> getResult() const {
        return std::static_pointer_cast<Result>(findResult(typeid(Result)));
    }
    /// Calls a callable once on the application thread, by an event after the end of the job: also when it has ended already.
    /// @throws ExNullPtr for an empty callable.
    [[nodiscard]] ObSubscription onEnd(std::function<void(BgJob& job)> callable);

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
    friend class BgCompletion;
    friend class BgManagerImp;
    friend class BgJobProtocol;
    friend class BgOrder;

    class Use;
    struct Annex;

    explicit BgJob(OPtr<BgJobProtocol> protocol);

    template <class MayChange>
    bool changeStateIf(MayChange mayChange, BgJobState const* state);
    template <class Step>
    void failIfThrown(Step step) noexcept;
    BgCompletion leaveWorker();
    void endElsewhere(std::exception_ptr const& error) noexcept;
    void recordEnd();
    float getProgress() const;
    bool addPending(BgJobHintChangeState::JobState_t state);
    bool takePending(BgJobHintChangeState::JobState_t& state) noexcept;
    void notifyState(RCShdPtr<BgJob> const& self, BgJobHintChangeState::JobState_t state) noexcept;
    void fail(ExBase const* error, char const* reason) noexcept;
    bool endWaiting(BgJobState const* state, LiString reason);
    Annex& annex();
    template <class Change>
    void report(Change change) noexcept;
    void reportUnits(std::int64_t done, std::int64_t total, std::string_view unit) noexcept;
    void reportPhase(std::string_view phase) noexcept;
    void reportMessage(BgMessage::Severity severity, std::string_view text) noexcept;
    void keepResult(std::shared_ptr<void> result, std::type_info const& type);
    std::shared_ptr<void> findResult(std::type_info const& type) const;
    void postNews() noexcept;
    void deliverNews() noexcept;
    void takeNews(RCShdPtr<BgJob> const& self, ObHints& hints);
    void queueAgain();
    bool endPause(bool continues) noexcept;
    void requestStop(LkDeadline::Time limit) noexcept;
    void stopProtocol() noexcept;
    void setOnce(LiDate& date, bool& isSet);
    void requestEnd() noexcept;
    bool releaseUntil(LkDeadline::Time deadline) noexcept;
    bool tryRelease() noexcept;
    void deleteUnusedProtocol() noexcept;
    OPtr<BgJobProtocol> takeUnusedProtocol() noexcept;
    void deleteProtocol(OPtr<BgJobProtocol> unused) noexcept;
    // The name and the type, for messages.
    LiString describe() const;
    bool isExecuting() const noexcept { return !_endOfJob.isSet(); }

    // Release and acquire: a thread that sees a state sees all earlier writes of the thread that set it.
    std::atomic<BgJobState const*> _state;
    // Set while no thread executes the job.
    LkEvent _endOfJob{"End of job event", true};
    LkEvent _protocolDeleted{"Protocol deleted", false};
    // Guards all below. No user code is called under it.
    mutable LkLock _lock{"BgJob"};
    // The value of the last progress notification.
    float _progress = 0.0f;
    float _slice;
    std::shared_ptr<ExBase const> _error;
    OPtr<BgJobProtocol> _protocol;
    // The names of the protocol after its release.
    std::optional<BgJobProtocol::Names> _names;
    LiDate const _submitted;
    LiDate _started;
    LiDate _ended;

    // How many threads execute the job, with what runs elsewhere, and how many are inside another function of the protocol.
    int _executions = 0;
    int _uses = 0;
    bool _startedSet = false;
    bool _endedSet = false;
    // Set under the lock: from now on no thread enters the protocol, and the last one inside deletes it. Acquire elsewhere.
    std::atomic<bool> _isReleased{false};
    bool _isPaused = false;
    // Whether a worker took the paused job from the queue: then the end of the pause queues it again.
    bool _isParked = false;
    // How many states a thread has to notify of: the one of which it notifies, and the pending ones, never more than these. Raised
    // under the lock; the thread that has nothing left sets it to 0 without the lock.
    std::atomic<std::uint8_t> _numToNotify{0};
    std::array<std::uint8_t, 6> _pending{};
    // The last entry of the manager's list that refers to this job, and the number of such entries. Guarded by the manager.
    int _timesListed = 0;
    List<RCShdPtr<BgJob>>::iterator _listed;
    // The group that the job was submitted to last, and the number of that submission.
    MtGroup<std::queue<MtTask>>* _workers = nullptr;
    std::uint64_t _number = 0;
    std::unique_ptr<Annex> _annex;
};

} // namespace Ko
