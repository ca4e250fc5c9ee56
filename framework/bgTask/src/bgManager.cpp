#include "framework/bgTask/bgManager.h"

#include "base/assertions.h"
#include "base/evEventManager.h"
#include "base/inSingleton.imp.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/msgServer.h"

#include <typeinfo>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgManager"};
constexpr int jobsLeftAtTheEnd = 220;
constexpr int jobDoesNotEnd = 319;

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

/// A change of a job on its way to the application thread. The job comes along only with an error, which is about it.
struct BgManagerImp::JobUpdateCbParams {
    RCShdPtr<BgJob> job;
    OPtr<ExBase> error;

    void operator()() const {
        if (Singleton::isInitialized()) Singleton::getInstance().jobUpdated(*this);
    }
};

BgManagerImp::~BgManagerImp() {
    for (Group* const group : {&_general, &_lowPriority, &_highPriority})
        group->waitForRequests();
    disableUpdates();
}

void BgManagerImp::addJob(RCShdPtr<BgJob> job) {
    requireJob(job);
    // First, so that nothing can fail any more once a worker has the job.
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
    // First, so that a job that was stopped is also deleted, and that told.
    ObHints const hints(RCShdPtr<BgManagerHintDelete>::create(job));
    job->stop();
    if (!job->releaseProtocol())
        throw BgEx::ExBgManager(source.file(), jobDoesNotEnd, "Unable to stop and delete this background job.");
    takeOffList(job);
    notify(hints);
    job->detachObserver(this);
}

List<RCShdPtr<BgJob>> BgManagerImp::getJobs() {
    return _jobs;
}

void BgManagerImp::stopAllJobs() {
    for (RCShdPtr<BgJob> const& job : _jobs)
        job->stop();
    while (!_jobs.empty()) {
        RCShdPtr<BgJob> const job = _jobs.front();
        job->detachObserver(this);
        // One that does not end keeps its worker, but the process has to go on.
        static_cast<void>(job->releaseProtocol());
        takeOffList(job);
    }
}

// On the thread that changed the job, where neither the list nor an observer may be touched.
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

void BgManagerImp::submit(RCShdPtr<BgJob> const& job, Group& group, bool isFollowed) {
    auto const listedBefore = job->_listed;
    job->_listed = _jobs.insert(_jobs.end(), job);
    ++job->_timesListed;
    bool isNewlyFollowed = false;
    try {
        // Before a worker can have it: no failure stays unseen.
        isNewlyFollowed = isFollowed && job->attachObserver(this);
        group.add(job);
    } catch (...) {
        if (isNewlyFollowed) job->detachObserver(this);
        _jobs.erase(std::exchange(job->_listed, listedBefore));
        --job->_timesListed;
        throw;
    }
}

void BgManagerImp::takeOffList(RCShdPtr<BgJob> const& job) noexcept {
    switch (std::exchange(job->_timesListed, 0)) {
    case 0:
        return;
    case 1:
        _jobs.erase(job->_listed);
        return;
    default: // somebody has submitted it several times
        _jobs.remove(RCShdPtr<BgJob>(job));
    }
}

} // namespace Ko
