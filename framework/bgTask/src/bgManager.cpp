#include "framework/bgTask/bgManager.h"

#include "base/assertions.h"
#include "base/evEventManager.h"
#include "base/inSingleton.imp.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgAskOnly.h"
#include "framework/bgTask/src/bgLog.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/msgServer.h"

#include <algorithm>
#include <mutex>
#include <typeinfo>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgManager"};
constexpr int jobsLeftAtTheEnd = 220;
constexpr int jobDoesNotEnd = 319;
constexpr double longestWait = 5.0; // seconds

constexpr char const* notEnoughSpace = "Ko::CtServerEx::ExNotEnoughSpace";

using Singleton = InSingleton<BgManagerImp>;

void requireJob(RCShdPtr<BgJob> const& job) {
    if (job.isNull()) RCExUtil::throwExNullPtr(typeid(BgJob).name());
}

// Runs a step and logs what it throws, so that the following steps run in any case.
template <class Step>
void logFailure(char const* context, Step step) noexcept {
    LgFirstError error(context);
    error.capture(step);
    error.log();
}

void requestStop(BgJob& job) noexcept {
    logFailure("Stopping a job", [&job] { job.stop(); });
}

template <class MakeText>
void logError(MakeText makeText) noexcept {
    logFailure("Logging of a job", [&makeText] { BgLog::group.log(0, makeText); });
}

} // namespace

template class InSingleton<BgManagerImp>;

BgManager::BgManager() = default;
BgManager::~BgManager() = default;

BgManager& BgManager::getInstance() {
    return Singleton::getInstance();
}
bool BgManager::isInitialized() noexcept {
    return Singleton::isInitialized();
}
void BgManager::performInitialize() {
    Singleton::performInitialize();
}
void BgManager::performFinalize() {
    if (!isInitialized()) return;
    source.require(getInstance().getJobs().empty(), "_jobs.empty()", jobsLeftAtTheEnd);
    Singleton::performFinalize();
}

/// A change of a job, passed to the application thread. The job is set only together with its error.
struct BgManagerImp::JobUpdateCbParams {
    RCShdPtr<BgJob> job;
    OPtr<ExBase> error;

    void operator()() const {
        if (Singleton::isInitialized()) Singleton::getInstance().jobUpdated(*this);
    }
};

BgManagerImp::~BgManagerImp() {
    logUnendedJobs();
    for (Group* const group : {&_general, &_lowPriority, &_highPriority})
        group->waitForRequests();
    disableUpdates();
}

void BgManagerImp::addJob(RCShdPtr<BgJob> job) {
    requireJob(job);
    // Allocated first: nothing may fail after a worker has the job.
    ObHints const hints(RCShdPtr<BgManagerHintNew>::create(job));
    submit(job, _general, true);
    notify(hints);
}

RCShdPtr<BgJob> BgManagerImp::addJob(OPtr<BgJobProtocol> protocol) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addJob(job);
    return job;
}

void BgManagerImp::addUiJob(RCShdPtr<BgJob> job, unsigned priority) {
    requireJob(job);
    submit(job, priority == 1 ? _highPriority : _lowPriority, false);
}

RCShdPtr<BgJob> BgManagerImp::addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addUiJob(job, priority);
    return job;
}

void BgManagerImp::stopAndDeleteJob(RCShdPtr<BgJob> job) {
    requireJob(job);
    // Allocated first: a job that was stopped is also deleted, and the observers are notified.
    ObHints const hints(RCShdPtr<BgManagerHintDelete>::create(job));
    requestStop(*job);
    if (!job->releaseProtocol())
        throw BgEx::ExBgManager(source.file(), jobDoesNotEnd, "Unable to stop and delete this background job.");
    removeFromList(*job);
    notify(hints);
    job->detachObserver(this);
}

List<RCShdPtr<BgJob>> BgManagerImp::getJobs() {
    std::lock_guard const guard(_lock);
    return _jobs;
}

void BgManagerImp::stopAllJobs() {
    dropEndedJobs();
    {
        BgAskOnly const askOnly;
        forEachJob(requestStop);
    }
    forEachJob([this](BgJob& job) {
        logFailure("Detaching from a job", [&] { job.detachObserver(this); });
        job.requestEnd();
    });
    auto const deadline = LkDeadline::after(longestWait);
    while (RCShdPtr<BgJob> const job = firstJob())
        job->releaseUntil(deadline) ? removeFromList(*job) : abandon(job);
}

// Runs on the thread that changed the job. The observers are notified on the application thread only.
void BgManagerImp::update(ObObserver<BgJobTag> const*, ObHints const& hints) {
    if (!EvEventManager::isInitialized()) return;
    if (auto const change = hints.pickHint<BgJobHintChangeState>()) {
        OPtr<ExBase> error = change->hasJobFailed() ? change->getJob()->cloneError() : nullptr;
        auto job = error ? change->getJob() : nullptr;
        EvEventManager::getInstance().postRequest(JobUpdateCbParams{std::move(job), std::move(error)});
    }
    if (hints.pickHint<BgJobHintProgress>()) EvEventManager::getInstance().postRequest(JobUpdateCbParams{});
}

void BgManagerImp::jobUpdated(JobUpdateCbParams const& update) {
    ExBase const* const error = update.error.get();
    if (error) MsgProtocol::display(MsgError(error->getReason()));
    ObHints hints;
    if (error && error->getTypeName().find(notEnoughSpace) != LiString::npos)
        hints.add(RCShdPtr<BgManagerNotEnoughSpaceHint>::create(update.job));
    hints.add(_updateHint);
    notify(hints);
}

void BgManagerImp::submit(RCShdPtr<BgJob> const& job, Group& group, bool isObserved) {
    dropEndedJobs();
    std::unique_lock lock(_lock);
    auto const listedBefore = job->_listed;
    job->_listed = _jobs.insert(_jobs.end(), job);
    ++job->_timesListed;
    lock.unlock();
    bool isNewlyObserved = false;
    try {
        // Before a worker can take the job, so that no failure is missed.
        isNewlyObserved = isObserved && job->attachObserver(this);
        group.add(job);
    } catch (...) {
        if (isNewlyObserved) job->detachObserver(this);
        lock.lock();
        if (job->_timesListed == 0) throw; // removed meanwhile
        --job->_timesListed;
        eraseEntry(std::exchange(job->_listed, listedBefore));
        throw;
    }
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

// The caller holds a reference, so that no job is destroyed under the lock.
void BgManagerImp::removeFromList(BgJob& job) noexcept {
    std::lock_guard const guard(_lock);
    int const times = std::exchange(job._timesListed, 0);
    if (times == 1) return eraseEntry(job._listed);
    if (times == 0) return;
    // Submitted several times.
    for (auto entry = _jobs.begin(); entry != _jobs.end();) {
        auto const next = std::next(entry);
        if (entry->get() == &job) eraseEntry(entry);
        entry = next;
    }
}

// Called under the lock.
void BgManagerImp::eraseEntry(Jobs::iterator entry) noexcept {
    if (entry == _nextToVisit) ++_nextToVisit;
    _jobs.erase(entry);
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
    removeFromList(*job);
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
