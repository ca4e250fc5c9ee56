#include "framework/bgTask/src/bgManagerImp.h"

#include "base/assertions.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgAskOnly.h"
#include "framework/bgTask/src/bgLog.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <mutex>
#include <typeinfo>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgManager"};
constexpr int jobDoesNotEnd = 319;
constexpr double longestWait = 5.0; // seconds

// Runs a step and logs what it throws, so that the following steps run in any case.
template <class Step>
void logFailure(char const* context, Step step) noexcept {
    LgFirstError error(context);
    error.capture(step);
    error.log();
}

void stopAndLog(BgJob& job) noexcept {
    logFailure("Stopping a job", [&job] { job.stop(); });
}

template <class MakeText>
void logError(MakeText makeText) noexcept {
    logFailure("Logging of a job", [&makeText] { BgLog::group.log(0, makeText); });
}

} // namespace

void BgManagerImp::stopAndDeleteJob(RCShdPtr<BgJob> job) {
    if (job.isNull()) RCExUtil::throwExNullPtr(typeid(BgJob).name());
    // Allocated first: a job that was stopped is also deleted, and the observers are notified.
    RCShdPtr<BgManagerHintDelete> hint;
    if (hasObservers()) hint = RCShdPtr<BgManagerHintDelete>::create(job);
    stopAndLog(*job);
    if (!job->releaseProtocol())
        throw BgEx::ExBgManager(source.file(), jobDoesNotEnd, "Unable to stop and delete this background job.");
    remove(job);
    if (hint) notify(ObHints(std::move(hint)));
    stopObserving(*job);
}

void BgManagerImp::stopAllJobs() {
    dropEndedJobs();
    {
        BgAskOnly const askOnly;
        forEachJob(stopAndLog);
    }
    forEachJob([this](BgJob& job) {
        logFailure("Detaching from a job", [&] { stopObserving(job); });
        job.requestEnd();
    });
    auto const deadline = LkDeadline::after(longestWait);
    while (RCShdPtr<BgJob> const job = firstJob())
        job->releaseUntil(deadline) ? remove(job) : abandon(job);
}

// Stopping is asked for on this thread and never waited for. The last quarter of the time is for those that are killed.
void BgManagerImp::stopAllJobs(std::chrono::milliseconds grace, WhenEnded whenEnded) {
    auto const listed = getJobs();
    Vector<RCShdPtr<BgJob>> const jobs(listed.begin(), listed.end());
    double const seconds = std::chrono::duration<double>(grace).count();
    auto const limit = LkDeadline::after(seconds * 0.75);
    for (auto const& job : jobs)
        job->requestStop(limit);
    _stopper.run([this, jobs, deadline = LkDeadline::after(seconds), whenEnded = std::move(whenEnded)] {
        waitForAll(jobs, deadline, whenEnded);
    });
}

// Runs on a thread of the stopper.
void BgManagerImp::waitForAll(
    Vector<RCShdPtr<BgJob>> const& jobs, LkDeadline::Time deadline, WhenEnded const& whenEnded) {
    Vector<RCShdPtr<BgJob>> ended, unended;
    for (auto const& job : jobs)
        (job->releaseUntil(deadline) ? ended : unended).push_back(job);
    for (auto const& job : unended)
        logError([&job] { return "The background job " + job->describe() + " did not end in its grace period."; });
    postToManager([ended = std::move(ended), unended = std::move(unended), whenEnded](BgManagerImp& manager) {
        for (auto const& job : ended) {
            manager.stopObserving(*job);
            manager.remove(job);
        }
        if (whenEnded) whenEnded(unended);
    });
}

void BgManagerImp::stopElsewhere(RCShdPtr<BgJob> const& job, LkDeadline::Time limit) {
    auto const stop = [job, limit] {
        BgAskOnly const askOnly(limit);
        job->stopProtocol();
    };
    using Singleton = InSingleton<BgManagerImp>;
    try {
        if (Singleton::isInitialized()) return Singleton::getInstance()._stopper.run(stop);
    } catch (std::exception const&) {
        // No memory or no thread: this thread has to do it.
    }
    stop();
}

void BgManagerImp::stopObserving(BgJob& job) {
    job.detachObserver(this);
    _followers.forget(job);
}

void BgManagerImp::remove(RCShdPtr<BgJob> const& job) noexcept {
    bool const isUiJob = removeFromList(*job);
    _followers.note(job, BgJobChange::Kind::Removed, isUiJob);
}

// Safe against changes of the list by what `step` calls.
template <class Step>
void BgManagerImp::forEachJob(Step step) noexcept {
    {
        std::lock_guard const guard(_lock);
        _nextToVisit = _jobs.begin();
    }
    while (RCShdPtr<BgJob> const job = visitNext())
        step(*job);
}

RCShdPtr<BgJob> BgManagerImp::visitNext() noexcept {
    std::lock_guard const guard(_lock);
    return _nextToVisit == _jobs.end() ? RCShdPtr<BgJob>() : *_nextToVisit++;
}

RCShdPtr<BgJob> BgManagerImp::firstJob() noexcept {
    std::lock_guard const guard(_lock);
    return _jobs.empty() ? RCShdPtr<BgJob>() : _jobs.front();
}

// Keeps a reference without allocating one.
void BgManagerImp::abandon(RCShdPtr<BgJob> const& job) noexcept {
    auto const makeText = [&job] {
        return "The background job " + job->describe() + " did not end within 5 seconds after it was stopped.";
    };
    logError(makeText);
    {
        std::lock_guard const guard(_lock);
        auto const entry = std::find(_jobs.begin(), _jobs.end(), job);
        if (entry == _jobs.end()) return;
        if (entry == _nextToVisit) ++_nextToVisit;
        // The entry that removal finds by its iterator must stay in the list.
        if (job->_timesListed == 1) job->_timesListed = 0;
        _abandoned.splice(_abandoned.end(), _jobs, entry);
    }
    remove(job);
}

void BgManagerImp::dropEndedJobs() noexcept {
    Jobs ended; // destroyed last: destructors may use the manager
    for (auto entry = _abandoned.begin(); entry != _abandoned.end();) {
        auto const next = std::next(entry);
        if (!(*entry)->isExecuting()) ended.splice(ended.end(), _abandoned, entry);
        entry = next;
    }
}

void BgManagerImp::logUnendedJobs() noexcept {
    dropEndedJobs();
    for (RCShdPtr<BgJob> const& job : _abandoned)
        logError([&job] { return "Waiting for the background job " + job->describe() + ", which does not end."; });
}

} // namespace Ko
