#include "framework/bgTask/bgJob.h"

#include "base/assertions.h"
#include "framework/bgTask/src/bgJobAnnex.h"
#include "framework/bgTask/src/bgJobUse.h"
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

constinit thread_local BgJob::Use const* BgJob::Use::innermost = nullptr;

RCShdPtr<BgJob> BgJob::create(OPtr<BgJobProtocol> protocol) {
    if (!protocol) RCExUtil::throwExNullPtr(typeid(BgJobProtocol).name());
    return RCShdPtr<BgJob>::create(std::move(protocol));
}

BgJob::BgJob(OPtr<BgJobProtocol> protocol)
    : _state(&BgJobWaiting::getInstance()), _slice(standardSlice), _protocol(std::move(protocol)), _started(_submitted),
      _ended(_submitted) {
    _protocol->setProgressCallback(this);
    _protocol->_job = this;
}

BgJob::~BgJob() {
    if (_protocol) _protocol->leaveJob();
}

void BgJob::execute() {
    Use const use(*this, Use::Purpose::Execution);
    if (use.mayExecute()) failIfThrown([this] { runProtocol(); });
    StatMgr::flushStatistics();
}

template <class Step>
void BgJob::failIfThrown(Step step) noexcept {
    try {
        step();
    } catch (ExBase const& error) {
        fail(&error, "");
    } catch (std::exception const& error) {
        fail(nullptr, error.what());
    } catch (...) {
        fail(nullptr, "an exception of an unknown type");
    }
}

void BgJob::runProtocol() {
    setOnce(_started, _startedSet);
    getState()->start(this);
    if (!_protocol->isElsewhere()) recordEnd();
}

void BgJob::recordEnd() {
    if (isWhole(_protocol->progress())) setOnce(_ended, _endedSet);
}

// Counts as one more execution until the end.
BgCompletion BgJob::leaveWorker() {
    source.require(Use::isExecuting(*this), "Use::isExecuting(*this)");
    RCShdPtr<BgJob> self(this);
    std::lock_guard const guard(_lock);
    ++_executions;
    return BgCompletion(std::move(self));
}

// The job may be used up after this: the caller shares it.
void BgJob::endElsewhere(std::exception_ptr const& error) noexcept {
    {
        Use const use(*this, Use::Purpose::Execution);
        failIfThrown([&] {
            if (error) std::rethrow_exception(error);
            BgJobBusy::end(this);
            recordEnd();
        });
    }
    std::lock_guard const guard(_lock);
    if (--_executions == 0) _endOfJob.set();
}

void BgJob::stop() {
    if (!isRunning()) return;
    Use const use(*this);
    if (use.hasProtocol()) getState()->stop(this);
}

// After the release of the protocol, the value of the last notification.
float BgJob::getProgress() const {
    Use const use(const_cast<BgJob&>(*this));
    if (use.hasProtocol()) return _protocol->progress();
    std::lock_guard const guard(_lock);
    return _progress;
}

BgJobStatistics BgJob::getStatistics() {
    float const progress = getProgress();
    std::lock_guard const guard(_lock);
    auto const format = [](LiDate const& date) { return LiDateFormat::format(date, 1); };
    return {format(_submitted), _startedSet ? format(_started) : "", _endedSet ? format(_ended) : "", progress};
}

std::optional<BgJobTimes::Duration> BgJob::getRemaining() const {
    if (getState() != &BgJobBusy::getInstance()) return {};
    return getTimes().estimateRemaining(getProgress(), LiDate::Clock::now());
}

bool BgJob::isReleased() const {
    return _isReleased.load(std::memory_order_acquire);
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
    if (getState() != expected) return false;
    return changeStateIf([expected](BgJobState const* current) { return current == expected; }, state);
}

void BgJob::reportProgress(int done, int total) {
    // NaN stays NaN, which no comparison below holds for: `min` and `max` return their first argument then.
    float const progress = std::min(std::max(static_cast<float>(done) / static_cast<float>(total), 0.0f), 1.0f);
    {
        std::lock_guard const guard(_lock);
        float const rise = progress - _progress;
        bool const isSmall = rise >= 0.0f && rise < _slice && !(rise > 0.0f && isWhole(progress));
        // The rise is NaN if the progress was unknown: every value that is known now matters.
        if (isSmall || std::isnan(progress)) return;
        _progress = progress;
    }
    if (!hasObservers()) return;
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
    bool notifies = false;
    bool resumes = false;
    {
        std::lock_guard const guard(_lock);
        if (!mayChange(_state.load(std::memory_order_relaxed))) return false;
        bool const isPending = addPending(value);
        // Together with the change: a stop before it does not hold for this execution, a stop after it does.
        if (value == BgJobHintChangeState::Busy && _protocol) _protocol->prepareStart();
        _state.store(state, std::memory_order_release);
        resumes = _isPaused && value >= BgJobHintChangeState::Stopping && endPause(false);
        notifies = !isPending && hasObservers();
        if (notifies) _numToNotify.store(1, std::memory_order_relaxed);
    }
    if (resumes) [[unlikely]]
        postNews();
    if (!notifies) return true;
    RCShdPtr<BgJob> const self(this);
    do {
        notifyState(self, value);
    } while (takePending(value));
    return true;
}

bool BgJob::endWaiting(BgJobState const* state, LiString reason) {
    BgJobState const* const waiting = &BgJobWaiting::getInstance();
    return changeStateIf(
        [&](BgJobState const* current) {
            if (current != waiting) return false;
            annex().reason = std::move(reason);
            return true;
        },
        state);
}

// Called under the lock. @returns whether the thread that notifies at present will go on with the state.
bool BgJob::addPending(BgJobHintChangeState::JobState_t state) {
    std::uint8_t present = _numToNotify.load(std::memory_order_acquire);
    if (present == 0) return false;
    source.require(present <= _pending.size(), "_numPending < _pending.size()");
    _pending[present - 1u] = static_cast<std::uint8_t>(state);
    return _numToNotify.compare_exchange_strong(
        present, static_cast<std::uint8_t>(present + 1), std::memory_order_acq_rel);
}

// @returns false when nothing is left. Acquire and release: the next thread that notifies does so after this one.
bool BgJob::takePending(BgJobHintChangeState::JobState_t& state) noexcept {
    std::uint8_t onlyThis = 1;
    if (_numToNotify.compare_exchange_strong(onlyThis, 0, std::memory_order_acq_rel)) return false;
    std::lock_guard const guard(_lock);
    state = static_cast<BgJobHintChangeState::JobState_t>(_pending.front());
    std::copy(_pending.begin() + 1, _pending.end(), _pending.begin());
    _numToNotify.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

void BgJob::notifyState(RCShdPtr<BgJob> const& self, BgJobHintChangeState::JobState_t state) noexcept {
    LgFirstError error("Notifying of a job's state");
    error.capture([&] { notify(ObHints(RCShdPtr<BgJobHintChangeState>::create(self, state))); });
    error.log();
}

void BgJob::fail(ExBase const* error, char const* reason) noexcept {
    LgFirstError failure("Keeping a job's error");
    failure.capture([&] {
        std::shared_ptr<ExBase const> copy(error ? error->clone() : nullptr);
        std::lock_guard const guard(_lock);
        if (error)
            _error.swap(copy);
        else
            annex().reason = reason;
    });
    auto const isRunning = [](BgJobState const* state) {
        return state->getHintValue() < BgJobHintChangeState::Stopped;
    };
    failure.capture([&] { changeStateIf(isRunning, &BgJobFailed::getInstance()); });
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
        if (!tryRelease()) continue;
        if (!Use::isInside(*this)) _protocolDeleted.waitUntil(deadline);
        return true;
    }
    return false;
}

// Fails while the job is being executed.
bool BgJob::tryRelease() noexcept {
    OPtr<BgJobProtocol> unused;
    {
        std::lock_guard const guard(_lock);
        if (_executions > 0) return false;
        _isReleased.store(true, std::memory_order_release);
        unused = takeUnusedProtocol();
    }
    deleteProtocol(std::move(unused));
    return true;
}

void BgJob::deleteUnusedProtocol() noexcept {
    std::unique_lock lock(_lock);
    OPtr<BgJobProtocol> unused = takeUnusedProtocol();
    lock.unlock();
    deleteProtocol(std::move(unused));
}

// Called under the lock.
OPtr<BgJobProtocol> BgJob::takeUnusedProtocol() noexcept {
    if (_uses > 0 || !_protocol) return nullptr;
    _protocol->_names = &_names.emplace(std::move(_protocol->_ownNames)); // its destructor may ask for them
    return std::move(_protocol);
}

void BgJob::deleteProtocol(OPtr<BgJobProtocol> unused) noexcept {
    if (!unused) return;
    unused->leaveJob();
    unused.reset();
    _protocolDeleted.set();
}

LiString BgJob::describe() const {
    return "\"" + getName() + "\" (" + getType() + ")";
}

} // namespace Ko
