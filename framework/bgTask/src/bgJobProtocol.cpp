#include "framework/bgTask/bgJobProtocol.h"

#include "base/inInitMgr.h"
#include "framework/bgTask/bgJob.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

namespace Ko {

BgJobProtocol::BgJobProtocol(LiString const& type) : BgJobProtocol("unnamed job", type) {}
BgJobProtocol::BgJobProtocol(LiString const& name, LiString const& type) : _ownNames{name, type} {}
BgJobProtocol::~BgJobProtocol() = default;

void BgJobProtocol::start() {
    if (!(_flags.fetch_and(~(Prepared | Elsewhere), std::memory_order_acq_rel) & Prepared))
        _flags.fetch_or(Continues, std::memory_order_release);
    execute();
}

void BgJobProtocol::stop() {
    if (!(_flags.fetch_and(~Continues, std::memory_order_acq_rel) & Held)) return;
    std::lock_guard const guard(_continueLock);
    _isLetGo->broadcast();
}

float BgJobProtocol::progress() const {
    return _progress.load(std::memory_order_relaxed);
}

bool BgJobProtocol::continueExecution() const {
    unsigned const flags = _flags.load(std::memory_order_acquire);
    if (flags & Held) [[unlikely]]
        return continueAfterPause();
    return flags & Continues;
}

// The application thread would wait for itself to resume the job.
bool BgJobProtocol::continueAfterPause() const {
    std::unique_lock lock(_continueLock);
    auto const isOver = [this] {
        return (_flags.load(std::memory_order_acquire) & (Held | Continues)) != (Held | Continues);
    };
    if (!InInitMgr::isApplicationThread()) _isLetGo->wait(lock, isOver);
    return mayContinue();
}

bool BgJobProtocol::mayContinue() const {
    return _flags.load(std::memory_order_acquire) & Continues;
}

BgCompletion BgJobProtocol::leaveWorker() {
    if (!_job) return {};
    BgCompletion completion = _job->leaveWorker();
    _flags.fetch_or(Elsewhere, std::memory_order_relaxed);
    return completion;
}

// A total of 0 gives an infinity or NaN. The job limits the values that its observers receive.
void BgJobProtocol::reportProgress(int done, int total) const {
    _progress.store(static_cast<float>(done) / static_cast<float>(total), std::memory_order_relaxed);
    if (_progressCallback) _progressCallback->reportProgress(done, total);
}

void BgJobProtocol::reportUnits(std::int64_t done, std::int64_t total, std::string_view unit) const {
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    std::int64_t const scale = 1 + total / most;
    std::int64_t const scaled = std::clamp(done / scale, -most, most);
    if (total > 0)
        reportProgress(static_cast<int>(scaled), static_cast<int>(total / scale));
    else
        reportProgress(0, 0);
    if (_job) _job->reportUnits(done, std::max<std::int64_t>(total, 0), unit);
}

void BgJobProtocol::reportUnknownProgress() const {
    reportUnits(0, 0, {});
}

void BgJobProtocol::reportPhase(std::string_view phase) const {
    if (_job) _job->reportPhase(phase);
}

void BgJobProtocol::reportMessage(BgMessage::Severity severity, std::string_view text) const {
    if (_job) _job->reportMessage(severity, text);
}

void BgJobProtocol::keepResult(std::shared_ptr<void> result, std::type_info const& type) const {
    if (_job) _job->keepResult(std::move(result), type);
}

// Called by the job under its lock.
void BgJobProtocol::hold() {
    std::lock_guard const guard(_continueLock);
    if (!_isLetGo) _isLetGo = std::make_unique<LkCondVar>("Job is resumed");
    _flags.fetch_or(Held, std::memory_order_release);
}

// A stop follows unless the protocol continues: `continueExecution()` must not be true in between.
void BgJobProtocol::letGo(bool continues) noexcept {
    std::lock_guard const guard(_continueLock);
    _flags.fetch_and(continues ? ~Held : ~(Held | Continues), std::memory_order_acq_rel);
    if (_isLetGo) _isLetGo->broadcast();
}

// Its destructor may still report.
void BgJobProtocol::leaveJob() noexcept {
    if (_progressCallback == _job) _progressCallback = nullptr;
    _job = nullptr;
}

void BgJobProtocol::prepareStart() noexcept {
    _flags.fetch_or(Continues | Prepared, std::memory_order_release);
}

} // namespace Ko
