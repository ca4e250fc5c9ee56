#include "framework/bgTask/src/bgFollowers.h"

#include "base/evEventManager.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <mutex>
#include <typeinfo>

namespace Ko {

namespace {

using Kind = BgJobChange::Kind;

RCShdPtr<BgJob> jobOf(ObHints const& hints) {
    if (auto const change = hints.findHint<BgJobHintChangeState>()) return change->getJob();
    if (auto const step = hints.findHint<BgJobHintProgress>()) return step->getJob();
    auto const report = hints[0].dynamicCast<BgJobHintReport>();
    return report ? report->getJob() : nullptr;
}

// The change that both are together.
Kind together(Kind first, Kind second) noexcept {
    if (second == Kind::Changed) return first;
    if (second == Kind::Added) return Kind::Changed; // removed before
    return Kind::Removed;
}

} // namespace

ObSubscription BgFollowers::add(std::function<void(BgManagerHintJobs const&)> callable, BgFollow follow) {
    if (!callable) RCExUtil::throwExNullPtr(typeid(callable).name());
    Subject& subject = follow == BgFollow::JobsAndUiJobs ? _all : _jobs;
    return ObSubscription(subject.connect(
        [callable = std::move(callable)](ObHints const& hints) { callable(*hints.findHint<BgManagerHintJobs>()); },
        ObDelivery::ApplicationThread, nullptr));
}

void BgFollowers::gatherChange(ObHints const& hints, bool isUiJob) noexcept {
    if (RCShdPtr<BgJob> const job = hints.size() > 0 ? jobOf(hints) : nullptr) gather(job, Kind::Changed, isUiJob);
}

void BgFollowers::gather(RCShdPtr<BgJob> const& job, Kind kind, bool isUiJob) noexcept {
    LgFirstError error("Following the list of jobs");
    error.capture([&] {
        if (merge(job, kind, isUiJob)) post();
    });
    error.log();
}

void BgFollowers::post() {
    try {
        BgManagerImp::postToManager([](BgManagerImp& manager) { manager.followers().notify(); });
    } catch (...) {
        std::lock_guard const guard(_lock);
        _isPosted = false; // the next change tries again
        throw;
    }
}

// Returns whether an event has to be posted.
bool BgFollowers::merge(RCShdPtr<BgJob> const& job, Kind kind, bool isUiJob) {
    RCShdPtr<BgJob> unused; // released after the unlock
    std::lock_guard const guard(_lock);
    auto const [place, isNew] = _indices.try_emplace(job.get(), _changes.size());
    if (isNew) {
        try {
            _changes.push_back({kind, job, isUiJob});
        } catch (...) {
            _indices.erase(place);
            throw;
        }
    } else if (BgJobChange& change = _changes[place->second]; change.kind == Kind::Added && kind == Kind::Removed) {
        unused.swap(change.job);
        _indices.erase(place);
    } else {
        change.kind = together(change.kind, kind);
    }
    return !std::exchange(_isPosted, EvEventManager::isInitialized());
}

void BgFollowers::notify() {
    Vector<BgJobChange> changes;
    {
        std::lock_guard const guard(_lock);
        _isPosted = false;
        changes.swap(_changes);
        _indices.clear();
    }
    std::erase_if(changes, [](BgJobChange const& change) { return change.job.isNull(); });
    notify(_all, changes);
    std::erase_if(changes, [](BgJobChange const& change) { return change.isUiJob; });
    notify(_jobs, std::move(changes));
}

void BgFollowers::notify(Subject& subject, Vector<BgJobChange> changes) {
    if (changes.empty() || !subject.hasObservers()) return;
    ObHints hints(RCShdPtr<BgManagerHintJobs>::create(std::move(changes)));
    hints.setDeferred();
    subject.notify(hints);
}

} // namespace Ko
