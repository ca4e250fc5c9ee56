#include "framework/bgTask/bgManager.h"

#include "base/assertions.h"
#include "base/inSingleton.imp.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/msgServer.h"

#include <mutex>
#include <typeinfo>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgManager"};
constexpr int jobsLeftAtTheEnd = 220;

constexpr char const* notEnoughSpace = "Ko::CtServerEx::ExNotEnoughSpace";

using Singleton = InSingleton<BgManagerImp>;

void requireJob(RCShdPtr<BgJob> const& job) {
    if (job.isNull()) RCExUtil::throwExNullPtr(typeid(BgJob).name());
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

namespace {

BgManagerImp& imp(BgManager& manager) noexcept {
    return static_cast<BgManagerImp&>(manager);
}

} // namespace

void BgManager::addJob(RCShdPtr<BgJob> job, BgAfter const& after) {
    imp(*this).addJob(job, &after);
}
RCShdPtr<BgJob> BgManager::addJob(OPtr<BgJobProtocol> protocol, BgAfter const& after) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addJob(job, after);
    return job;
}
void BgManager::addUiJob(RCShdPtr<BgJob> job, unsigned priority, BgAfter const& after) {
    imp(*this).addUiJob(job, priority, &after);
}
RCShdPtr<BgJob> BgManager::addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority, BgAfter const& after) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addUiJob(job, priority, after);
    return job;
}
Vector<RCShdPtr<BgJob>> BgManager::getPredecessors(RCShdPtr<BgJob> const& job) {
    return imp(*this).order().getPredecessors(*job);
}
bool BgManager::moveToFront(RCShdPtr<BgJob> const& job) {
    BgWorkers* const workers = imp(*this).workersOf(*job);
    return workers && workers->moveToFront(*job);
}
bool BgManager::isUiJob(BgJob const& job) const noexcept {
    return static_cast<BgManagerImp const&>(*this).isUiJob(job);
}
void BgManager::stopAllJobs(
    std::chrono::milliseconds grace, std::function<void(Vector<RCShdPtr<BgJob>> const& unended)> whenEnded) {
    imp(*this).stopAllJobs(grace, std::move(whenEnded));
}
ObSubscription BgManager::onJobs(std::function<void(BgManagerHintJobs const& hint)> callable, BgFollow follow) {
    return imp(*this).follow(std::move(callable), follow);
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
    for (BgWorkers* const group : {&_general, &_lowPriority, &_highPriority})
        group->waitForRequests();
    disableUpdates();
}

void BgManagerImp::addJob(RCShdPtr<BgJob> job) {
    addJob(job, nullptr);
}

void BgManagerImp::addJob(RCShdPtr<BgJob> const& job, BgAfter const* after) {
    requireJob(job);
    // Allocated first: nothing may fail after a worker has the job.
    RCShdPtr<BgManagerHintNew> hint;
    if (hasObservers()) hint = RCShdPtr<BgManagerHintNew>::create(job);
    submit(job, _general, after);
    if (hint) notify(ObHints(std::move(hint)));
}

RCShdPtr<BgJob> BgManagerImp::addJob(OPtr<BgJobProtocol> protocol) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addJob(job, nullptr);
    return job;
}

void BgManagerImp::addUiJob(RCShdPtr<BgJob> job, unsigned priority) {
    addUiJob(job, priority, nullptr);
}

void BgManagerImp::addUiJob(RCShdPtr<BgJob> const& job, unsigned priority, BgAfter const* after) {
    requireJob(job);
    submit(job, priority == 1 ? _highPriority : _lowPriority, after);
}

RCShdPtr<BgJob> BgManagerImp::addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) {
    RCShdPtr<BgJob> job = BgJob::create(std::move(protocol));
    addUiJob(job, priority, nullptr);
    return job;
}

ObSubscription BgManagerImp::follow(std::function<void(BgManagerHintJobs const&)> callable, BgFollow follow) {
    ObSubscription subscription = _followers.add(std::move(callable), follow);
    if (follow == BgFollow::JobsAndUiJobs)
        for (auto const& job : getJobs())
            if (isUiJob(*job)) _followers.observe(*job);
    return subscription;
}

List<RCShdPtr<BgJob>> BgManagerImp::getJobs() {
    std::lock_guard const guard(_lock);
    return _jobs;
}

// Runs on the thread that changed the job. The observers are notified on the application thread only.
void BgManagerImp::update(ObObserver<BgJobTag> const*, ObHints const& hints) {
    if (!EvEventManager::isInitialized()) return;
    if (auto const change = hints.findHint<BgJobHintChangeState>()) {
        OPtr<ExBase> error = change->hasJobFailed() ? change->getJob()->cloneError() : nullptr;
        auto job = error ? change->getJob() : nullptr;
        EvEventManager::getInstance().postRequest(JobUpdateCbParams{std::move(job), std::move(error)});
    }
    if (hints.findHint<BgJobHintProgress>()) EvEventManager::getInstance().postRequest(JobUpdateCbParams{});
    _followers.note(hints, false);
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

void BgManagerImp::submit(RCShdPtr<BgJob> const& job, BgWorkers& group, BgAfter const* after) {
    dropEndedJobs();
    std::unique_lock lock(_lock);
    auto const listedBefore = job->_listed;
    job->_listed = _jobs.insert(_jobs.end(), job);
    ++job->_timesListed;
    job->_workers = &group;
    if (job->_number == 0) job->_number = ++_lastNumber;
    lock.unlock();
    bool const isUiJob = &group != &_general;
    bool isNewlyObserved = false;
    // Before a worker can take the job, so that its changes come later.
    _followers.note(job, BgJobChange::Kind::Added, isUiJob);
    try {
        // Before a worker can take the job, so that no failure is missed.
        isNewlyObserved = isUiJob ? _followers.observe(*job) : job->attachObserver(this);
        if (after && !after->predecessors.empty())
            _order.add(job, *after);
        else
            group.add(job);
    } catch (...) {
        if (isNewlyObserved) isUiJob ? _followers.forget(*job) : static_cast<void>(job->detachObserver(this));
        _followers.note(job, BgJobChange::Kind::Removed, isUiJob);
        lock.lock();
        if (job->_timesListed == 0) throw; // removed meanwhile
        --job->_timesListed;
        eraseEntry(std::exchange(job->_listed, listedBefore));
        throw;
    }
}

BgWorkers* BgManagerImp::workersOf(BgJob const& job) const noexcept {
    std::lock_guard const guard(_lock);
    return job._workers;
}

bool BgManagerImp::isUiJob(BgJob const& job) const noexcept {
    BgWorkers const* const workers = workersOf(job);
    return workers && workers != &_general;
}

void BgManagerImp::queue(RCShdPtr<BgJob> const& job) {
    if (Singleton::isInitialized()) Singleton::getInstance().workersOf(*job)->add(job);
}

// Ahead of all that were submitted later: jobs that are resumed together keep their order.
void BgManagerImp::queueAgain(RCShdPtr<BgJob> const& job) {
    if (!Singleton::isInitialized()) return;
    BgWorkers* const workers = Singleton::getInstance().workersOf(*job);
    auto const isLater = [number = job->_number](
                             MtTaskImp const& waiting) { return static_cast<BgJob const&>(waiting)._number > number; };
    if (workers) workers->addAhead(job, isLater);
}

// The caller holds a reference, so that no job is destroyed under the lock. Returns whether it is a user-interface job.
bool BgManagerImp::removeFromList(BgJob& job) noexcept {
    std::lock_guard const guard(_lock);
    bool const isUiJob = job._workers != &_general;
    int const times = std::exchange(job._timesListed, 0);
    if (times == 1) eraseEntry(job._listed);
    if (times <= 1) return isUiJob;
    // Submitted several times.
    for (auto entry = _jobs.begin(); entry != _jobs.end();) {
        auto const next = std::next(entry);
        if (entry->get() == &job) eraseEntry(entry);
        entry = next;
    }
    return isUiJob;
}

// Called under the lock.
void BgManagerImp::eraseEntry(Jobs::iterator entry) noexcept {
    if (entry == _nextToVisit) ++_nextToVisit;
    _jobs.erase(entry);
}

} // namespace Ko
