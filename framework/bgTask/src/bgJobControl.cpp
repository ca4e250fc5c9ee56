#include "framework/bgTask/src/bgJobAnnex.h"

#include "framework/bgTask/src/bgAskOnly.h"
#include "framework/bgTask/src/bgJobUse.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/lgFirstError.h"

#include <mutex>

namespace Ko {

bool BgJob::isPaused() const noexcept {
    std::lock_guard const guard(_lock);
    return _isPaused;
}

void BgJob::pause() {
    {
        std::lock_guard const guard(_lock);
        if (_isPaused || !_protocol || getState()->getHintValue() >= BgJobHintChangeState::Stopping) return;
        Annex& extra = annex();
        _protocol->hold();
        extra.pausedSince = LiDate::Clock::now();
        extra.news.hasPause = true;
        _isPaused = true;
    }
    postNews();
}

void BgJob::resume() {
    bool isQueuedAgain = false;
    {
        std::lock_guard const guard(_lock);
        if (!_isPaused) return;
        isQueuedAgain = _isParked;
        endPause(true);
    }
    postNews();
    if (isQueuedAgain) queueAgain();
}

// A job that cannot be queued stays paused.
void BgJob::queueAgain() {
    try {
        BgManagerImp::queueAgain(RCShdPtr<BgJob>(this));
    } catch (...) {
        std::lock_guard const guard(_lock);
        if (getState() == &BgJobWaiting::getInstance()) _isPaused = _isParked = true;
        throw;
    }
}

// Called under the lock.
bool BgJob::endPause(bool continues) noexcept {
    _isPaused = false;
    _isParked = false;
    _annex->news.hasPause = true;
    if (_startedSet) _annex->paused += LiDate::Clock::now() - _annex->pausedSince;
    if (_protocol) _protocol->letGo(continues);
    return true;
}

void BgJob::requestStop() noexcept {
    requestStop(LkDeadline::never);
}

// A change of the state notifies observers; nothing else here can be slow.
void BgJob::requestStop(LkDeadline::Time limit) noexcept {
    Use const use(*this);
    if (!use.hasProtocol()) return;
    LgFirstError error("Stopping a job");
    error.capture([&] {
        if (changeState(&BgJobWaiting::getInstance(), &BgJobStopped::getInstance())) return;
        if (!changeState(&BgJobBusy::getInstance(), &BgJobStopping::getInstance())) return;
        _protocol->BgJobProtocol::stop();
        BgManagerImp::stopElsewhere(RCShdPtr<BgJob>(this), limit);
    });
    error.log();
}

void BgJob::stopProtocol() noexcept {
    Use const use(*this);
    if (!use.hasProtocol()) return;
    LgFirstError error("Stopping a job");
    error.capture([this] { _protocol->stop(); });
    error.log();
}

} // namespace Ko
