#include "framework/bgTask/src/bgJobAnnex.h"

#include "base/evEventManager.h"
#include "resmgt/lgFirstError.h"

#include <mutex>
#include <typeinfo>

namespace Ko {

namespace {

constexpr std::size_t mostMessages = 100; // in one notification

bool isEnd(ObHints const& hints) {
    auto const change = hints.findHint<BgJobHintChangeState>();
    return change && change->getJobState() >= BgJobHintChangeState::Stopped;
}

} // namespace

LiString BgJob::getName() const {
    std::lock_guard const guard(_lock);
    return _names ? _names->name : _protocol->getJobName();
}

LiString BgJob::getType() const {
    std::lock_guard const guard(_lock);
    return _names ? _names->type : _protocol->getJobType();
}

BgJobTimes BgJob::getTimes() const {
    std::lock_guard const guard(_lock);
    BgJobTimes times;
    times.submitted = _submitted.getTime();
    if (_startedSet) times.started = _started.getTime();
    if (_endedSet) times.ended = _ended.getTime();
    if (!_annex) return times;
    times.paused = _annex->paused;
    if (_isPaused && _startedSet) times.paused += LiDate::Clock::now() - _annex->pausedSince;
    return times;
}

LiString BgJob::getPhase() const {
    std::lock_guard const guard(_lock);
    return _annex ? _annex->phase : LiString();
}

BgUnits BgJob::getUnits() const {
    std::lock_guard const guard(_lock);
    return _annex ? _annex->units : BgUnits();
}

LiString BgJob::getReason() const {
    std::lock_guard const guard(_lock);
    if (_error) return _error->getReason();
    return _annex ? _annex->reason : LiString();
}

std::shared_ptr<void> BgJob::findResult(std::type_info const& type) const {
    std::lock_guard const guard(_lock);
    return _annex && _annex->resultType && *_annex->resultType == type ? _annex->result : nullptr;
}

// Called under the lock.
BgJob::Annex& BgJob::annex() {
    if (!_annex) _annex = std::make_unique<Annex>();
    return *_annex;
}

void BgJob::keepResult(std::shared_ptr<void> result, std::type_info const& type) {
    std::lock_guard const guard(_lock);
    Annex& extra = annex();
    extra.result.swap(result); // the previous one is destroyed after the unlock
    extra.resultType = &type;
}

// Changes the data of the job under its lock, then has the observers notified. Must not end the work when it fails.
template <class Change>
void BgJob::report(Change change) noexcept {
    LgFirstError error("Notifying of a job's report");
    error.capture([&] {
        std::unique_lock lock(_lock);
        Annex& extra = annex();
        change(extra, extra.news);
        lock.unlock();
        postNews();
    });
    error.log();
}

void BgJob::reportUnits(std::int64_t done, std::int64_t total, std::string_view unit) noexcept {
    report([&](Annex& extra, Annex::News& news) {
        if (extra.units.unit != unit) extra.units.unit = unit;
        extra.units.done = done;
        extra.units.total = total;
        news.hasUnits = true;
        if (total <= 0) _progress = std::numeric_limits<float>::quiet_NaN();
    });
}

void BgJob::reportPhase(std::string_view phase) noexcept {
    report([&](Annex& extra, Annex::News& news) {
        extra.phase = phase;
        news.hasPhase = true;
    });
}

void BgJob::reportMessage(BgMessage::Severity severity, std::string_view text) noexcept {
    // Messages are not kept for later observers.
    if (!hasObservers()) return;
    report([&](Annex&, Annex::News& news) {
        if (news.messages.size() < mostMessages)
            news.messages.push_back({severity, LiString(text)});
        else
            ++news.numOmitted;
    });
}

// One event brings all that is reported before it runs.
void BgJob::postNews() noexcept {
    {
        std::lock_guard const guard(_lock);
        if (_annex->news.isPosted || !hasObservers() || !EvEventManager::isInitialized()) return;
        _annex->news.isPosted = true;
    }
    LgFirstError error("Notifying of a job's report");
    try {
        EvEventManager::getInstance().postRequest([self = RCShdPtr<BgJob>(this)] { self->deliverNews(); });
    } catch (...) {
        error.capture([] { throw; });
        std::lock_guard const guard(_lock);
        _annex->news.isPosted = false;
    }
    error.log();
}

void BgJob::deliverNews() noexcept {
    RCShdPtr<BgJob> const self(this);
    LgFirstError error("Notifying of a job's report");
    error.capture([&] {
        ObHints hints;
        hints.setDeferred();
        takeNews(self, hints);
        if (hints.size() > 0) notify(hints);
    });
    error.log();
}

void BgJob::takeNews(RCShdPtr<BgJob> const& self, ObHints& hints) {
    std::lock_guard const guard(_lock);
    Annex& extra = *_annex;
    Annex::News news = std::exchange(extra.news, {});
    if (news.hasPause) hints.add(RCShdPtr<BgJobHintPause>::create(self, _isPaused));
    if (news.hasPhase) hints.add(RCShdPtr<BgJobHintPhase>::create(self, extra.phase));
    if (news.hasUnits) hints.add(RCShdPtr<BgJobHintUnits>::create(self, extra.units));
    if (!news.messages.empty())
        hints.add(RCShdPtr<BgJobHintMessage>::create(self, std::move(news.messages), news.numOmitted));
}

ObSubscription BgJob::onEnd(std::function<void(BgJob& job)> callable) {
    if (!callable) RCExUtil::throwExNullPtr(typeid(callable).name());
    auto const connection = connect(
        [callable = std::move(callable), isDone = false](ObHints const& hints) mutable {
            if (!std::exchange(isDone, true)) callable(*hints.findHint<BgJobHintChangeState>()->getJob());
        },
        ObDelivery::ApplicationThread, isEnd);
    // Under the lock: a change of the state either finds the new observer or is seen here.
    std::unique_lock lock(_lock);
    auto const state = getState()->getHintValue();
    lock.unlock();
    if (state >= BgJobHintChangeState::Stopped)
        connection->post(ObHints(RCShdPtr<BgJobHintChangeState>::create(RCShdPtr<BgJob>(this), state)));
    return ObSubscription(connection);
}

} // namespace Ko
