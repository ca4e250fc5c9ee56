#include "framework/bgTask/bgJob.h"

#include "base/assertions.h"
#include "internalAPI/statMgr.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <typeinfo>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgJob"};
constexpr float standardSlice = 0.05f;
constexpr double longestWait = 5.0; // seconds

bool isWhole(float progress) noexcept {
    return std::abs(progress - 1.0f) <= std::numeric_limits<float>::epsilon() * std::max(1.0f, std::abs(progress));
}

} // namespace

/// One use of the protocol by a thread. Keeps the protocol and the job alive: the protocol or an observer may release the
/// last other reference to the job.
class BgJob::Use {
public:
    enum class Purpose { Question, Execution };

    explicit Use(BgJob& job, Purpose purpose = Purpose::Question)
        : _job(&job), _purpose(purpose), _outer(std::exchange(innermost, this)) {
        std::lock_guard const guard(job._lock);
        _hasProtocol = !job._isReleased;
        if (!_hasProtocol) return;
        if (purpose == Purpose::Question)
            ++job._uses;
        else if (job._executions++ == 0)
            job._endOfJob.reset();
    }
    ~Use() {
        if (_hasProtocol && leave()) _job->deleteUnusedProtocol();
        innermost = _outer;
    }
    Use(Use const&) = delete;
    Use& operator=(Use const&) = delete;

    /// False if the protocol was released before.
    bool hasProtocol() const noexcept { return _hasProtocol; }

    /// Whether this thread is inside the protocol of the job, for one of the purposes or for any.
    static bool isInside(BgJob const& job) noexcept {
        return any([&job](Use const& use) { return use._job.get() == &job; });
    }
    static bool isExecuting(BgJob const& job) noexcept {
        return any([&job](Use const& use) { return use._job.get() == &job && use._purpose == Purpose::Execution; });
    }

private:
    // Whether this was the last use of a released protocol.
    bool leave() noexcept {
        BgJob& job = *_job;
        std::lock_guard const guard(job._lock);
        if (_purpose == Purpose::Question) return --job._uses == 0 && job._isReleased;
        if (--job._executions == 0) job._endOfJob.set();
        return false;
    }
    template <class Predicate>
    static bool any(Predicate predicate) noexcept {
        for (Use const* use = innermost; use; use = use->_outer)
            if (predicate(*use)) return true;
        return false;
    }

    static thread_local Use const* innermost;

    RCShdPtr<BgJob> const _job;
    Purpose const _purpose;
    Use const* const _outer;
    bool _hasProtocol = false;
};

constinit thread_local BgJob::Use const* BgJob::Use::innermost = nullptr;

RCShdPtr<BgJob> BgJob::create(OPtr<BgJobProtocol> protocol) {
    if (!protocol) RCExUtil::throwExNullPtr(typeid(BgJobProtocol).name());
    return RCShdPtr<BgJob>::create(std::move(protocol));
}

BgJob::BgJob(OPtr<BgJobProtocol> protocol)
    : _state(&BgJobIdle::getInstance()), _slice(standardSlice), _protocol(std::move(protocol)), _started(_submitted),
      _ended(_submitted) {
    setState(&BgJobWaiting::getInstance());
    _protocol->setProgressCallback(this);
    _notificationsEnabled = true;
}

BgJob::~BgJob() = default;

void BgJob::execute() {
    Use const use(*this, Use::Purpose::Execution);
    if (use.hasProtocol()) {
        try {
            runProtocol();
        } catch (ExBase const& error) {
            fail(&error);
        } catch (...) {
            fail(nullptr);
        }
    }
    StatMgr::flushStatistics();
}

void BgJob::runProtocol() {
    setOnce(_started, _startedSet);
    getState()->start(this);
    if (isWhole(_protocol->progress())) setOnce(_ended, _endedSet);
}

void BgJob::stop() {
    Use const use(*this);
    if (use.hasProtocol()) getState()->stop(this);
}

BgJobStatistics BgJob::getStatistics() {
    Use const use(*this);
    float const reported = use.hasProtocol() ? _protocol->progress() : 0.0f;
    std::lock_guard const guard(_lock);
    auto const format = [](LiDate const& date) { return LiDateFormat::format(date, 1); };
    return {format(_submitted), _startedSet ? format(_started) : "", _endedSet ? format(_ended) : "",
        use.hasProtocol() ? reported : _progress};
}

bool BgJob::isReleased() const {
    std::lock_guard const guard(_lock);
    return _isReleased;
}

bool BgJob::releaseProtocol() {
    RCShdPtr<BgJob> const self(this);
    if (isReleased()) return true;
    requestEnd();
    // The time starts here: the protocol may have waited in `stop()`.
    return releaseUntil(LkDeadline::after(longestWait));
}

bool BgJob::isRunning() const noexcept {
    return getState()->getHintValue() < BgJobHintChangeState::Stopped;
}

OPtr<ExBase> BgJob::cloneError() const {
    std::unique_lock lock(_lock);
    std::shared_ptr<ExBase const> const error = _error;
    lock.unlock();
    return OPtr<ExBase>(error ? error->clone() : nullptr);
}

void BgJob::setNotifProgressSlice(float slice) {
    std::lock_guard const guard(_lock);
    _slice = slice >= 0.0f && slice <= 1.0f ? slice : standardSlice;
}

void BgJob::setState(BgJobState const* state) {
    changeStateIf([state](BgJobState const* current) { return current != state; }, state);
}

bool BgJob::changeState(BgJobState const* expected, BgJobState const* state) {
    return changeStateIf([expected](BgJobState const* current) { return current == expected; }, state);
}

void BgJob::reportProgress(int done, int total) {
    // NaN stays NaN, which no comparison below holds for: `min` and `max` return their first argument then.
    float const progress = std::min(std::max(static_cast<float>(done) / static_cast<float>(total), 0.0f), 1.0f);
    {
        std::lock_guard const guard(_lock);
        float const rise = progress - _progress;
        bool const notifies = rise < 0.0f || rise >= _slice || (rise > 0.0f && isWhole(progress));
        if (!notifies) return;
        _progress = progress;
    }
    if (!_notificationsEnabled || !hasObservers()) return;
    // A failed notification must not end the work.
    LgFirstError error("Notifying of a job's progress");
    error.capture([this, progress] {
        RCShdPtr<BgJob> const self(this);
        notify(ObHints(RCShdPtr<BgJobHintProgress>::create(self, progress)));
    });
    error.log();
}

// The state changes under the lock, so that observers are notified in the order of the changes. The thread that notifies
// goes on with the changes that happen meanwhile.
template <class MayChange>
bool BgJob::changeStateIf(MayChange mayChange, BgJobState const* state) {
    BgJobHintChangeState::JobState_t value = state->getHintValue();
    {
        std::lock_guard const guard(_lock);
        if (!mayChange(_state.load(std::memory_order_relaxed))) return false;
        if (_isNotifying) {
            source.require(_numPending < _pending.size(), "_numPending < _pending.size()");
            _pending[_numPending++] = static_cast<std::uint8_t>(value);
        }
        // Together with the change: a stop before it does not hold for this execution, a stop after it does.
        if (value == BgJobHintChangeState::Busy && _protocol) _protocol->prepareStart();
        _state.store(state, std::memory_order_release);
        if (_isNotifying || !_notificationsEnabled || !hasObservers()) return true;
        _isNotifying = true;
    }
    RCShdPtr<BgJob> const self(this);
    do {
        notifyState(self, value);
    } while (takePending(value));
    return true;
}

bool BgJob::takePending(BgJobHintChangeState::JobState_t& state) noexcept {
    std::lock_guard const guard(_lock);
    _isNotifying = _numPending > 0;
    if (!_isNotifying) return false;
    state = static_cast<BgJobHintChangeState::JobState_t>(_pending.front());
    std::copy(_pending.begin() + 1, _pending.end(), _pending.begin());
    --_numPending;
    return true;
}

void BgJob::notifyState(RCShdPtr<BgJob> const& self, BgJobHintChangeState::JobState_t state) noexcept {
    LgFirstError error("Notifying of a job's state");
    error.capture([&] { notify(ObHints(RCShdPtr<BgJobHintChangeState>::create(self, state))); });
    error.log();
}

void BgJob::fail(ExBase const* error) noexcept {
    LgFirstError failure("Keeping a job's error");
    if (error) {
        failure.capture([this, error] {
            std::shared_ptr<ExBase const> copy(error->clone());
            std::lock_guard const guard(_lock);
            _error.swap(copy);
        });
    }
    failure.capture([this] { setState(&BgJobFailed::getInstance()); });
    failure.log();
}

void BgJob::setOnce(LiDate& date, bool& isSet) {
    std::lock_guard const guard(_lock);
    if (!isSet) date = LiDate();
    isSet = true;
}

void BgJob::requestEnd() noexcept {
    Use const use(*this);
    if (!use.hasProtocol()) return;
    LgFirstError error("Stopping a job");
    // A worker that takes the job from now on does not start it.
    error.capture([this] { changeState(&BgJobWaiting::getInstance(), &BgJobStopped::getInstance()); });
    error.capture([this] { _protocol->stop(); });
    error.log();
}

bool BgJob::releaseUntil(LkDeadline::Time deadline) noexcept {
    while (!Use::isExecuting(*this) && _endOfJob.waitUntil(deadline)) {
        if (!markReleased()) continue;
        deleteUnusedProtocol();
        if (!Use::isInside(*this)) _protocolDeleted.waitUntil(deadline);
        return true;
    }
    return false;
}

// Fails while the job is being executed.
bool BgJob::markReleased() noexcept {
    std::lock_guard const guard(_lock);
    if (_executions > 0) return false;
    _isReleased = true;
    return true;
}

void BgJob::deleteUnusedProtocol() noexcept {
    OPtr<BgJobProtocol> unused;
    {
        std::lock_guard const guard(_lock);
        if (_uses == 0) unused = std::move(_protocol);
    }
    if (!unused) return;
    unused.reset();
    _protocolDeleted.set();
}

LiString BgJob::describe() {
    Use const use(*this);
    if (!use.hasProtocol()) return "a released job";
    return "\"" + _protocol->getJobName() + "\" (" + _protocol->getJobType() + ")";
}

} // namespace Ko
