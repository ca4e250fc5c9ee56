#include "framework/bgTask/src/bgOrder.h"

#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgManagerImp.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <mutex>
#include <typeinfo>
#include <unordered_set>

namespace Ko {

namespace {

bool hasEnded(BgJob const& job) noexcept {
    return !job.isRunning();
}

BgJobHintChangeState::JobState_t stateOf(BgJob const& job) noexcept {
    return job.getState()->getHintValue();
}

[[noreturn]] void refuseCircle(BgJob const& job, int line = __builtin_LINE()) {
    throw BgEx::ExBgManager(
        "framework\\bgTask\\src\\bgOrder", line, "The job \"" + job.getName() + "\" would wait for itself.");
}

} // namespace

void BgOrder::add(RCShdPtr<BgJob> const& job, BgAfter const& after) {
    std::uint64_t const number = enter(job, after);
    try {
        observe(job);
        for (auto const& predecessor : after.predecessors)
            observe(predecessor);
    } catch (...) {
        leave(*job, number);
        throw;
    }
    // The observer is notified of all that end from now on.
    for (auto const& predecessor : after.predecessors)
        if (hasEnded(*predecessor)) noteEnd(predecessor);
    if (hasEnded(*job)) noteEnd(job);
}

std::uint64_t BgOrder::enter(RCShdPtr<BgJob> const& job, BgAfter const& after) {
    for (auto const& predecessor : after.predecessors)
        if (predecessor.isNull()) RCExUtil::throwExNullPtr(typeid(BgJob).name());
    std::lock_guard const guard(_lock);
    for (auto const& predecessor : after.predecessors)
        if (waitsFor(*predecessor, *job)) refuseCircle(*job);
    auto const [place, isNew] = _waits.try_emplace(job.get());
    Wait& wait = place->second;
    if (!isNew)
        throw BgEx::ExBgManager("framework\\bgTask\\src\\bgOrder", __LINE__,
            "The job \"" + job->getName() + "\" waits for other jobs already.");
    try {
        wait = {job, after.predecessors, 0, after.onFailure, ++_lastNumber};
        for (auto const& predecessor : after.predecessors)
            link(wait, predecessor);
    } catch (...) {
        _waits.erase(place);
        throw;
    }
    return wait.number;
}

void BgOrder::link(Wait& wait, RCShdPtr<BgJob> const& predecessor) {
    _successors[predecessor.get()].push_back({wait.job.get(), wait.number});
    ++wait.numRemaining;
}

void BgOrder::leave(BgJob const& job, std::uint64_t number) noexcept {
    Waits::node_type left; // destroyed after the unlock
    std::lock_guard const guard(_lock);
    auto const place = _waits.find(&job);
    if (place != _waits.end() && place->second.number == number) left = _waits.extract(place);
}

// A circle needs a job that waits for `other`; usually there is none yet.
bool BgOrder::waitsFor(BgJob const& waiting, BgJob const& other) const {
    if (&waiting == &other) return true;
    if (!_successors.contains(&other)) return false;
    std::unordered_set<BgJob const*> seen{&waiting};
    Vector<BgJob const*> open{&waiting};
    while (!open.empty()) {
        auto const place = _waits.find(open.back());
        open.pop_back();
        if (place == _waits.end()) continue;
        for (auto const& predecessor : place->second.predecessors) {
            if (predecessor.get() == &other) return true;
            if (seen.insert(predecessor.get()).second) open.push_back(predecessor.get());
        }
    }
    return false;
}

Vector<RCShdPtr<BgJob>> BgOrder::getPredecessors(BgJob const& job) const {
    std::unique_lock lock(_lock);
    auto const place = _waits.find(&job);
    if (place == _waits.end()) return {};
    Vector<RCShdPtr<BgJob>> predecessors = place->second.predecessors;
    lock.unlock();
    std::erase_if(predecessors, [](auto const& predecessor) { return hasEnded(*predecessor); });
    return predecessors;
}

void BgOrder::observe(RCShdPtr<BgJob> const& job) {
    job->attachObserver(this);
}

void BgOrder::update(ObObserver<BgJobTag> const*, ObHints const& hints) {
    auto const change = hints.findHint<BgJobHintChangeState>();
    if (change && change->getJobState() >= BgJobHintChangeState::Stopped) noteEnd(change->getJob());
}

void BgOrder::noteEnd(RCShdPtr<BgJob> const& job) noexcept {
    try {
        std::lock_guard const guard(_lock);
        _ended.push_back(job);
        if (_isSettling) return;
        _isSettling = true;
    } catch (std::bad_alloc const&) {
        return settle(job); // nested, but no job waits for ever
    }
    for (;;) {
        RCShdPtr<BgJob> ended;
        {
            std::lock_guard const guard(_lock);
            _isSettling = !_ended.empty();
            if (!_isSettling) return;
            ended = std::move(_ended.front());
            _ended.pop_front();
        }
        settle(ended);
    }
}

// Without memory, the job ends without a reason.
template <class MakeReason>
void BgOrder::end(BgJob& job, BgJobState const* state, MakeReason makeReason) noexcept {
    LgFirstError error("Ending a job that waits for others");
    error.capture([&] { job.endWaiting(state, makeReason()); });
    error.capture([&] { job.changeState(&BgJobWaiting::getInstance(), state); });
    error.log();
}

void BgOrder::queue(RCShdPtr<BgJob> const& job) noexcept {
    try {
        BgManagerImp::queue(job);
    } catch (std::exception const& error) {
        end(*job, &BgJobFailed::getInstance(), [&error] { return error.what(); });
    }
}

// Queues or ends the successors of a job that has ended, without a lock.
void BgOrder::settle(RCShdPtr<BgJob> const& ended) noexcept {
    take(*ended);
    bool const hasCompleted = stateOf(*ended) == BgJobHintChangeState::Complete;
    bool const hasFailed = stateOf(*ended) == BgJobHintChangeState::Failed;
    while (auto const node = takeSuccessor(*ended, hasCompleted)) {
        Wait const& wait = node.mapped();
        if (wait.numRemaining == 0) {
            queue(wait.job);
            continue;
        }
        BgJobState const* const state =
            hasFailed ? static_cast<BgJobState const*>(&BgJobFailed::getInstance()) : &BgJobStopped::getInstance();
        char const* const what = hasFailed ? "\" failed." : "\" was stopped.";
        end(*wait.job, state, [&] { return "The job \"" + ended->getName() + what; });
    }
}

BgOrder::Waits::node_type BgOrder::take(BgJob const& job) noexcept {
    std::lock_guard const guard(_lock);
    return _waits.extract(&job);
}

// The next successor that no longer waits: with nothing remaining if it can run, otherwise it cannot run any more.
BgOrder::Waits::node_type BgOrder::takeSuccessor(BgJob const& ended, bool hasCompleted) noexcept {
    std::lock_guard const guard(_lock);
    auto const successors = _successors.find(&ended);
    if (successors == _successors.end()) return {};
    while (!successors->second.empty()) {
        Successor const next = successors->second.front();
        successors->second.pop_front();
        auto const place = _waits.find(next.job);
        if (place == _waits.end() || place->second.number != next.number) continue;
        Wait& wait = place->second;
        bool const goesOn = hasCompleted || wait.onFailure == BgAfter::OnFailure::Run;
        if (goesOn && --wait.numRemaining > 0) continue;
        return _waits.extract(place);
    }
    _successors.erase(successors);
    return {};
}

} // namespace Ko
