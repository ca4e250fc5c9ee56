#include "resmgt/obChangeManager.h"

#include "resmgt/lgFirstError.h"

#include <memory>
#include <thread>
#include <utility>

namespace Ko {

/// One observer attached to one subject, in the list of both.
///
/// While somebody is inside the observer's `update` on behalf of the subject, the link stays in the subject's list, detached
/// or not: the notification finds its way on from there. What is detached is freed by the last who uses it.
struct ObLink {
    ObSubjectLinks* subject;   // null after its end
    ObObserverLinks* observer; // null after its end
    std::uint64_t number;      // grows in the order of attachment
    ObLink* previousOfSubject = nullptr;
    ObLink* nextOfSubject = nullptr;
    ObLink* previousOfObserver = nullptr;
    ObLink* nextOfObserver = nullptr;
    // How many notifications are inside, how many threads wait for them, and whether no more will come: guarded by the
    // subject's lock while there is a subject, and by the manager's after that.
    int running = 0;
    int waiting = 0;
    bool isDetached = false;
};

namespace {

/// Where this thread is inside calls of observers, the innermost first.
struct Inside {
    ObLink* link;
    ObSubjectLinks* subject; // null after its end
    Inside* outer;
};
thread_local Inside* innermost = nullptr;

int countOwn(ObLink const& link) noexcept {
    int count = 0;
    for (Inside const* inside = innermost; inside; inside = inside->outer)
        count += inside->link == &link;
    return count;
}

bool isInside(ObObserverLinks const& observer) noexcept {
    for (Inside const* inside = innermost; inside; inside = inside->outer)
        if (inside->link && inside->link->observer == &observer) return true;
    return false;
}

} // namespace

ObNotifierBase::~ObNotifierBase() = default;

void ObSubjectLinks::Lock::waitUntilFree() const noexcept {
    for (int tries = 0; _isLocked.load(std::memory_order_relaxed); ++tries)
        if (tries > 16) std::this_thread::yield(); // the one that holds it may have been suspended
}

/// One notification on its way from link to link.
class ObChangeManagerImp::Pass {
public:
    Pass(ObChangeManagerImp& manager, ObSubjectLinks& subject) noexcept
        : _manager(manager), _inside{nullptr, &subject, innermost}, _innermost(innermost) {
        _innermost = &_inside;
    }
    ~Pass() { _innermost = _inside.outer; }
    Pass(Pass const&) = delete;
    Pass& operator=(Pass const&) = delete;

    /// The next observer to call; null at the end.
    ObObserverLinks* next() noexcept {
        ObLink* const left = _inside.link;
        if (!_inside.subject) {
            _inside.link = nullptr;
            leave(left);
            return nullptr;
        }
        bool othersWait = false;
        {
            std::lock_guard const guard(_inside.subject->_lock);
            ObLink* const link = firstToTell(left ? left->nextOfSubject : begin());
            if (link) ++link->running;
            othersWait = left && (left->isDetached || left->waiting > 0);
            if (left && !othersWait) --left->running;
            _inside.link = link;
        }
        if (othersWait) leave(left);
        return _inside.link ? _inside.link->observer : nullptr;
    }

private:
    ObLink* begin() noexcept {
        ObLink const* const last = _inside.subject->_last;
        _lastNumber = last ? last->number : 0;
        return _inside.subject->_first.load(std::memory_order_relaxed);
    }
    // What is attached from now on is told the next time.
    ObLink* firstToTell(ObLink* link) const noexcept {
        while (link && (link->isDetached || !link->observer->_updatesEnabled.load(std::memory_order_relaxed)))
            link = link->nextOfSubject;
        return link && link->number <= _lastNumber ? link : nullptr;
    }
    void leave(ObLink* link) noexcept {
        Guard const guard(_manager._mutex);
        _manager.stepOff(*link);
    }

    ObChangeManagerImp& _manager;
    Inside _inside;
    Inside*& _innermost;
    std::uint64_t _lastNumber = 0;
};

// Looks where fewer links are: a subject with many observers usually has observers with few subjects, and the other way
// round.
template <class Predicate>
ObLink* ObChangeManagerImp::find(
    ObSubjectLinks const& subject, ObObserverLinks const& observer, Predicate predicate) noexcept {
    ObLink* ofSubject = subject._first;
    ObLink* ofObserver = observer._first;
    for (; ofSubject && ofObserver; ofSubject = ofSubject->nextOfSubject, ofObserver = ofObserver->nextOfObserver) {
        if (ofSubject->observer == &observer && predicate(*ofSubject)) return ofSubject;
        if (ofObserver->subject == &subject && predicate(*ofObserver)) return ofObserver;
    }
    return nullptr;
}

// Runs a step under the lock of the link's subject, if that still exists.
template <class Step>
auto ObChangeManagerImp::withSubject(ObLink const& link, Step step) noexcept {
    if (!link.subject) return step();
    std::lock_guard const guard(link.subject->_lock);
    return step();
}

bool ObChangeManagerImp::attach(ObSubjectLinks& subject, ObObserverLinks& observer) {
    auto link = std::make_unique<ObLink>(ObLink{&subject, &observer, 0});
    {
        Guard const guard(_mutex);
        if (find(subject, observer, [](ObLink const& other) { return !other.isDetached; })) return false;
        link->number = ++_lastNumber;
        link->nextOfObserver = observer._first;
        if (link->nextOfObserver) link->nextOfObserver->previousOfObserver = link.get();
        observer._first = link.get();
        observer._wasLinked = true;

        std::lock_guard const subjectGuard(subject._lock);
        subject._wasLinked = true;
        link->previousOfSubject = subject._last;
        if (subject._last)
            subject._last->nextOfSubject = link.get();
        else
            subject._first.store(link.get(), std::memory_order_relaxed);
        subject._last = link.release();
    }
    _notifier.attachedTo(observer, subject);
    return true;
}

bool ObChangeManagerImp::detach(ObSubjectLinks& subject, ObObserverLinks& observer) {
    {
        Guard guard(_mutex);
        ObLink* const attached = find(subject, observer, [](ObLink const& link) { return !link.isDetached; });
        if (attached) {
            markDetached(*attached);
            freeIfUnused(*attached);
        }
        // Also on what somebody else has detached a moment ago.
        auto const isLeaving = [](ObLink const& link) { return link.isDetached && isRunningElsewhere(link); };
        while (ObLink* const link = isInside(observer) ? nullptr : find(subject, observer, isLeaving))
            waitForOthers(guard, *link);
        if (!attached) return false;
    }
    _notifier.detachedFrom(observer, subject);
    return true;
}

void ObChangeManagerImp::notify(ObSubjectLinks& subject, ObHints const& hints) {
    LgFirstError error("An observer");
    Pass pass(*this, subject);
    while (ObObserverLinks* const observer = pass.next())
        error.capture([&] { _notifier.update(*observer, hints); });
    error.log();
}

void ObChangeManagerImp::disableUpdates(ObObserverLinks& observer) {
    observer._updatesEnabled = false;
    Guard guard(_mutex);
    if (isInside(observer)) return;
    for (ObLink* link = observer._first; link;) {
        if (!isRunningElsewhere(*link)) {
            link = link->nextOfObserver;
            continue;
        }
        waitForOthers(guard, *link);
        link = observer._first; // the list may be another one now
    }
}

void ObChangeManagerImp::forget(ObSubjectLinks& subject) noexcept {
    LgFirstError error("An observer");
    Guard guard(_mutex);
    for (ObLink* link = subject._first; link; link = link->nextOfSubject)
        markDetached(*link);
    for (Inside* inside = innermost; inside; inside = inside->outer)
        if (inside->subject == &subject) inside->subject = nullptr;
    while (ObLink* const link = subject._first) {
        // Inside the observer, as in an update: its end waits for this, or knows of it if it comes in here.
        Inside inside{link, nullptr, innermost};
        innermost = &inside;
        ObObserverLinks* observer = nullptr;
        {
            std::lock_guard const subjectGuard(subject._lock);
            ++link->running;
            if (link->observer && link->observer->_updatesEnabled) observer = link->observer;
        }
        waitForOthers(guard, *link);
        guard.unlock();
        if (observer) error.capture([&] { _notifier.detachedFrom(*observer, subject); });
        guard.lock();
        innermost = inside.outer;
        leaveSubject(*link);
        stepOff(*link);
    }
    guard.unlock();
    error.log();
}

void ObChangeManagerImp::forget(ObObserverLinks& observer) noexcept {
    observer._updatesEnabled = false;
    Guard guard(_mutex);
    while (ObLink* const link = observer._first) {
        markDetached(*link);
        // What is left then is this thread, inside the observer that ends.
        withSubject(*link, [link] { ++link->waiting; });
        waitForOthers(guard, *link);
        leaveObserver(*link);
        withSubject(*link, [link] { --link->waiting; });
        freeIfUnused(*link);
    }
}

// From now on no notification chooses it.
void ObChangeManagerImp::markDetached(ObLink& link) noexcept {
    withSubject(link, [&link] { link.isDetached = true; });
}

bool ObChangeManagerImp::isRunningElsewhere(ObLink const& link) noexcept {
    return withSubject(link, [&link] { return link.running > countOwn(link); });
}

// The link may be gone afterwards.
void ObChangeManagerImp::waitForOthers(Guard& guard, ObLink& link) noexcept {
    withSubject(link, [&link] { ++link.waiting; });
    while (isRunningElsewhere(link))
        _someoneSteppedOff.wait(guard);
    withSubject(link, [&link] { --link.waiting; });
    freeIfUnused(link);
}

void ObChangeManagerImp::stepOff(ObLink& link) noexcept {
    withSubject(link, [&link] { --link.running; });
    _someoneSteppedOff.notify_all();
    freeIfUnused(link);
}

void ObChangeManagerImp::freeIfUnused(ObLink& link) noexcept {
    auto const isUnused = [&link] { return link.isDetached && link.running == 0 && link.waiting == 0; };
    if (!withSubject(link, isUnused)) return;
    leaveSubject(link);
    leaveObserver(link);
    std::unique_ptr<ObLink> const unused(&link);
}

void ObChangeManagerImp::leaveSubject(ObLink& link) noexcept {
    if (!link.subject) return;
    ObSubjectLinks& subject = *std::exchange(link.subject, nullptr);
    std::lock_guard const guard(subject._lock);
    ObLink* const next = link.nextOfSubject;
    ObLink* const previous = link.previousOfSubject;
    (next ? next->previousOfSubject : subject._last) = previous;
    if (previous)
        previous->nextOfSubject = next;
    else
        subject._first.store(next, std::memory_order_relaxed);
}

void ObChangeManagerImp::leaveObserver(ObLink& link) noexcept {
    if (!link.observer) return;
    ObObserverLinks& observer = *std::exchange(link.observer, nullptr);
    ObLink* const next = link.nextOfObserver;
    ObLink* const previous = link.previousOfObserver;
    if (next) next->previousOfObserver = previous;
    if (previous)
        previous->nextOfObserver = next;
    else
        observer._first = next;
}

} // namespace Ko
