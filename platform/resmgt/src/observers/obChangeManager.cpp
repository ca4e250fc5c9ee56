#include "resmgt/obChangeManager.h"

#include "resmgt/lgFirstError.h"
#include "resmgt/src/observers/obLink.h"

#include <memory>
#include <thread>
#include <utility>

namespace Ko {

namespace {

/// The calls of observers that this thread is inside of, the innermost first.
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
        if (tries > 16) std::this_thread::yield(); // the holder may have been suspended
}

/// The lock of the links. Destroys unused links after the unlock, since the owner of an observer may run arbitrary code.
class ObChangeManagerImp::Guard : public std::unique_lock<std::mutex> {
public:
    explicit Guard(std::mutex& mutex) : unique_lock(mutex) {}
    ~Guard() {
        if (!_unused) return;
        if (owns_lock()) unlock();
        destroyUnused();
    }
    Guard(Guard const&) = delete;
    Guard& operator=(Guard const&) = delete;

    void destroyLater(ObLink& link) noexcept { link.nextOfSubject = std::exchange(_unused, &link); }

private:
    void destroyUnused() noexcept {
        while (_unused) {
            std::unique_ptr<ObLink> const link(_unused);
            _unused = link->nextOfSubject;
        }
    }

    ObLink* _unused = nullptr;
};

/// One notification, which goes from link to link.
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
        bool needsManager = false;
        {
            std::lock_guard const guard(_inside.subject->_lock);
            ObLink* const link = firstToNotify(left ? left->nextOfSubject : begin());
            if (link) ++link->running;
            needsManager = left && (left->isDetached || left->waiting > 0);
            if (left && !needsManager) --left->running;
            _inside.link = link;
        }
        if (needsManager) leave(left);
        return _inside.link ? _inside.link->observer : nullptr;
    }

private:
    ObLink* begin() noexcept {
        ObLink const* const last = _inside.subject->_last;
        _lastNumber = last ? last->number : 0;
        return _inside.subject->_first.load(std::memory_order_relaxed);
    }
    // Links that are attached from now on are skipped.
    ObLink* firstToNotify(ObLink* link) const noexcept {
        while (link && (link->isDetached || !link->observer->_updatesEnabled.load(std::memory_order_relaxed)))
            link = link->nextOfSubject;
        return link && link->number <= _lastNumber ? link : nullptr;
    }
    void leave(ObLink* link) noexcept {
        Guard guard(_manager._mutex);
        _manager.leaveLink(guard, *link);
    }

    ObChangeManagerImp& _manager;
    Inside _inside;
    Inside*& _innermost;
    std::uint64_t _lastNumber = 0;
};

// Searches both lists in parallel, until the shorter one ends: usually one of them is short.
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

// Runs a step under the lock of the subject of the link, if the subject still exists.
template <class Step>
auto ObChangeManagerImp::withSubject(ObLink const& link, Step step) noexcept {
    if (!link.subject) return step();
    std::lock_guard const guard(link.subject->_lock);
    return step();
}

bool ObChangeManagerImp::attach(ObSubjectLinks& subject, ObObserverLinks& observer, RCShdPtr<RCBase> owner) {
    auto link = std::make_unique<ObLink>(ObLink{&subject, &observer, 0});
    link->owner = std::move(owner);
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
        if (attached) freeIfUnused(guard, *attached, true);
        // Also waits for links that another thread has just detached.
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
        link = observer._first; // the list may have changed during the wait
    }
}

void ObChangeManagerImp::release(ObObserverLinks& observer) noexcept {
    observer._updatesEnabled = false;
    Guard guard(_mutex);
    for (ObLink* link = observer._first; link;) {
        ObLink* const next = link->nextOfObserver;
        freeIfUnused(guard, *link, true);
        link = next;
    }
}

// Whoever takes out the last link does not use the subject after the unlock.
bool ObChangeManagerImp::hasLinks(ObSubjectLinks& subject) noexcept {
    std::lock_guard const guard(subject._lock);
    return subject.hasObservers();
}

void ObChangeManagerImp::forget(ObSubjectLinks& subject) noexcept {
    for (Inside* inside = innermost; inside; inside = inside->outer)
        if (inside->subject == &subject) inside->subject = nullptr;
    if (!hasLinks(subject)) return;
    LgFirstError error("An observer");
    Guard guard(_mutex);
    for (ObLink* link = subject._first; link; link = link->nextOfSubject)
        markDetached(*link);
    while (ObLink* const link = subject._first) {
        // Counts as being inside the observer: its destructor waits for the call of `detachedFrom`, or does not wait if that
        // call runs it.
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
        withSubject(*link, [link] { leaveSubject(*link); });
        leaveLink(guard, *link);
    }
    guard.unlock();
    error.log();
}

void ObChangeManagerImp::forget(ObObserverLinks& observer) noexcept {
    observer._updatesEnabled = false;
    Guard guard(_mutex);
    while (ObLink* const link = observer._first) {
        markDetached(*link);
        // After the wait, only this thread can still be inside the observer.
        withSubject(*link, [link] { ++link->waiting; });
        waitForOthers(guard, *link);
        leaveObserver(*link);
        withSubject(*link, [link] { --link->waiting; });
        freeIfUnused(guard, *link);
    }
}

// Notifications skip the link from now on.
void ObChangeManagerImp::markDetached(ObLink& link) noexcept {
    withSubject(link, [&link] { link.isDetached = true; });
}

bool ObChangeManagerImp::isRunningElsewhere(ObLink const& link) noexcept {
    return withSubject(link, [&link] { return link.running > countOwn(link); });
}

// May free the link.
void ObChangeManagerImp::waitForOthers(Guard& guard, ObLink& link) noexcept {
    withSubject(link, [&link] { ++link.waiting; });
    while (isRunningElsewhere(link))
        _linkIsUnused.wait(guard);
    withSubject(link, [&link] { --link.waiting; });
    freeIfUnused(guard, link);
}

void ObChangeManagerImp::leaveLink(Guard& guard, ObLink& link) noexcept {
    withSubject(link, [&link] { --link.running; });
    _linkIsUnused.notify_all();
    freeIfUnused(guard, link);
}

// @param detaches whether notifications skip the link from now on.
void ObChangeManagerImp::freeIfUnused(Guard& guard, ObLink& link, bool detaches) noexcept {
    auto const step = [&link, detaches] {
        link.isDetached = link.isDetached || detaches;
        return leaveSubjectIfUnused(link);
    };
    if (!withSubject(link, step)) return;
    leaveObserver(link);
    guard.destroyLater(link);
}

// Called under the lock of the subject, if that still exists, like the next one.
bool ObChangeManagerImp::leaveSubjectIfUnused(ObLink& link) noexcept {
    if (!link.isDetached || link.running > 0 || link.waiting > 0) return false;
    leaveSubject(link);
    return true;
}

void ObChangeManagerImp::leaveSubject(ObLink& link) noexcept {
    if (!link.subject) return;
    ObSubjectLinks& subject = *std::exchange(link.subject, nullptr);
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
