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
constexpr auto longestWait = std::chrono::seconds(5);

bool isWhole(float progress) noexcept {
    return std::abs(progress - 1.0f) <= std::numeric_limits<float>::epsilon() * std::max(1.0f, std::abs(progress));
}

} // namespace

/// Keeps the protocol from being deleted, and the end of the job from being announced.
class BgJob::Use {
public:
    explicit Use(BgJob& job) : _job(job) {
        std::lock_guard const guard(job._lock);
        if (job._uses++ == 0) job._endOfJob.reset();
    }
    ~Use() {
        std::lock_guard const guard(_job._lock);
        if (--_job._uses == 0) _job._endOfJob.set();
    }
    Use(Use const&) = delete;
    Use& operator=(Use const&) = delete;

private:
    BgJob& _job;
};

RCShdPtr<BgJob> BgJob::create(OPtr<BgJobProtocol> protocol) {
    if (!protocol) RCExUtil::throwExNullPtr(typeid(BgJobProtocol).name());
    return RCShdPtr<BgJob>::create(std::move(protocol));
}

BgJob::BgJob(OPtr<BgJobProtocol> protocol)
    : _state(&BgJobIdle::getInstance()), _slice(standardSlice), _protocol(std::move(protocol)), _started(_submitted),
      _ended(_submitted) {
    setState(&BgJobWaiting::getInstance());
    _protocol->prepareStart();
    _protocol->setProgressCallback(this);
    _notificationsEnabled = true;
}

BgJob::~BgJob() = default;

void BgJob::execute() {
    Use const use(*this);
    try {
        runProtocol();
    } catch (ExBase const& error) {
        fail(&error);
    } catch (...) {
        fail(nullptr);
    }
    StatMgr::flushStatistics();
}

void BgJob::runProtocol() {
    if (!_protocol) return;
    note(_started, _startedSet);
    getState()->start(this);
    if (isWhole(_protocol->progress())) note(_ended, _endedSet);
}

void BgJob::stop() {
    Use const use(*this);
    if (_protocol) getState()->stop(this);
}

BgJobStatistics BgJob::getStatistics() {
    Use const use(*this);
    float const reported = _protocol ? _protocol->progress() : 0.0f;
    std::lock_guard const guard(_lock);
    auto const format = [](LiDate const& date) { return LiDateFormat::format(date, 1); };
    return {format(_submitted), _startedSet ? format(_started) : "", _endedSet ? format(_ended) : "",
        _protocol ? reported : _progress};
}

bool BgJob::isReleased() const {
    std::lock_guard const guard(_lock);
    return !_protocol;
}

bool BgJob::releaseProtocol() {
    if (isReleased()) return true;
    {
        Use const use(*this);
        // A worker that takes the job from now on does not start it.
        changeState(&BgJobWaiting::getInstance(), &BgJobStopped::getInstance());
        if (_protocol) _protocol->stop();
    }
    // Only now, because a protocol may take longer than that to stop.
    auto const deadline = std::chrono::steady_clock::now() + longestWait;
    while (_endOfJob.waitUntil(deadline))
        if (deleteUnusedProtocol()) return true;
    return false;
}

bool BgJob::isRunning() const noexcept {
    return getState()->getHintValue() < BgJobHintChangeState::Stopped;
}

OPtr<ExBase> BgJob::cloneError() const {
    std::lock_guard const guard(_lock);
    return OPtr<ExBase>(_error ? _error->clone() : nullptr);
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
    // No number stays none: `min` and `max` return their first argument then, and no comparison below holds.
    float const progress = std::min(std::max(static_cast<float>(done) / static_cast<float>(total), 0.0f), 1.0f);
    {
        std::lock_guard const guard(_lock);
        float const rise = progress - _progress;
        bool const tells = rise < 0.0f || rise >= _slice || (rise > 0.0f && isWhole(progress));
        if (!tells) return;
        _progress = progress;
    }
    if (!_notificationsEnabled || !hasObservers()) return;
    // What cannot be told does not end the work that it tells of.
    LgFirstError error("Telling a job's progress");
    error.capture([this, progress] {
        RCShdPtr<BgJob> const self(this);
        notify(ObHints(RCShdPtr<BgJobHintProgress>::create(self, progress)));
    });
    error.log();
}

// The state changes under the lock, so that observers can be told in the order of the changes; they are told without it.
template <class MayChange>
bool BgJob::changeStateIf(MayChange mayChange, BgJobState const* state) {
    BgJobHintChangeState::JobState_t value = state->getHintValue();
    {
        std::lock_guard const guard(_lock);
        if (!mayChange(_state.load(std::memory_order_relaxed))) return false;
        if (_isTelling) {
            source.require(_numUntold < _untold.size(), "_numUntold < _untold.size()");
            _untold[_numUntold++] = static_cast<std::uint8_t>(value);
        }
        _state.store(state, std::memory_order_release);
        if (_isTelling || !_notificationsEnabled || !hasObservers()) return true;
        _isTelling = true;
    }
    do {
        tell(value);
    } while (takeUntold(value));
    return true;
}

bool BgJob::takeUntold(BgJobHintChangeState::JobState_t& state) noexcept {
    std::lock_guard const guard(_lock);
    _isTelling = _numUntold > 0;
    if (!_isTelling) return false;
    state = static_cast<BgJobHintChangeState::JobState_t>(_untold.front());
    std::copy(_untold.begin() + 1, _untold.end(), _untold.begin());
    --_numUntold;
    return true;
}

void BgJob::tell(BgJobHintChangeState::JobState_t state) noexcept {
    LgFirstError error("Telling a job's state");
    error.capture([this, state] {
        RCShdPtr<BgJob> const self(this);
        notify(ObHints(RCShdPtr<BgJobHintChangeState>::create(self, state)));
    });
    error.log();
}

void BgJob::fail(ExBase const* error) noexcept {
    LgFirstError failure("Keeping a job's error");
    if (error) {
        failure.capture([this, error] {
            OPtr<ExBase> copy(error->clone());
            std::lock_guard const guard(_lock);
            _error.swap(copy);
        });
    }
    failure.capture([this] { setState(&BgJobFailed::getInstance()); });
    failure.log();
}

void BgJob::note(LiDate& date, bool& isSet) {
    std::lock_guard const guard(_lock);
    if (!isSet) date = LiDate();
    isSet = true;
}

bool BgJob::deleteUnusedProtocol() {
    OPtr<BgJobProtocol> unused;
    std::lock_guard const guard(_lock);
    if (_uses > 0) return false;
    unused = std::move(_protocol);
    return true;
}

} // namespace Ko
