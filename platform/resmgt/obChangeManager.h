#pragma once

#include "resmgt/lkSingleton.h"
#include "resmgt/obHints.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Ko {

template <class Tag>
class ObSubject;
template <class Tag>
class ObObserver;
struct ObLink;

/// What the change manager keeps in a subject: the links to its observers.
class KO_RESMGT_API ObSubjectLinks {
public:
    /// Whether a notification would reach anybody now. Any thread.
    bool hasObservers() const noexcept { return _first.load(std::memory_order_relaxed) != nullptr; }

protected:
    ObSubjectLinks() = default;
    ~ObSubjectLinks() = default;
    /// Whether the change manager knows the subject.
    bool wasLinked() const noexcept { return _wasLinked; }

private:
    friend class ObChangeManagerImp;

    // Held for some nanoseconds at a time, and taken once for each observer that is told; a mutex would double the cost of
    // a notification.
    class Lock {
    public:
        void lock() noexcept {
            while (_isLocked.exchange(true, std::memory_order_acquire))
                waitUntilFree();
        }
        void unlock() noexcept { _isLocked.store(false, std::memory_order_release); }

    private:
        void waitUntilFree() const noexcept;
        std::atomic<bool> _isLocked{false};
    };

    Lock _lock;
    bool _wasLinked = false;
    std::atomic<ObLink*> _first{nullptr};
    ObLink* _last = nullptr;
};

/// What the change manager keeps in an observer: the links to its subjects.
class KO_RESMGT_API ObObserverLinks {
protected:
    ObObserverLinks() = default;
    ~ObObserverLinks() = default;
    /// From now on no notification chooses the observer.
    void disable() noexcept { _updatesEnabled = false; }
    /// Whether the change manager knows the observer.
    bool wasLinked() const noexcept { return _wasLinked; }

private:
    friend class ObChangeManagerImp;

    ObLink* _first = nullptr;
    std::atomic<bool> _updatesEnabled{true};
    bool _wasLinked = false;
};

/// How a change manager reaches the observers of its tag.
class KO_RESMGT_API ObNotifierBase {
public:
    virtual ~ObNotifierBase();
    /// Call the functions of `ObObserver` that have these names:
    virtual void attachedTo(ObObserverLinks& observer, ObSubjectLinks& subject) = 0;
    virtual void detachedFrom(ObObserverLinks& observer, ObSubjectLinks& subject) = 0;
    virtual void update(ObObserverLinks& observer, ObHints const& hints) = 0;
};

/// The one for the observers of `Tag`.
template <class Tag>
class ObNotifier final : public ObNotifierBase {
public:
    void attachedTo(ObObserverLinks& observer, ObSubjectLinks& subject) override;
    void detachedFrom(ObObserverLinks& observer, ObSubjectLinks& subject) override;
    void update(ObObserverLinks& observer, ObHints const& hints) override;
};

/// Which observers are attached to which subjects, and their notification. Any thread.
///
/// No lock is held while an observer is called. A notification costs what its own subject's observers cost; to attach and
/// to detach cost the same however many subjects and observers there are.
class KO_RESMGT_API ObChangeManagerImp {
public:
    /// @param notifier is not owned.
    explicit ObChangeManagerImp(ObNotifierBase& notifier) noexcept : _notifier(notifier) {}
    ObChangeManagerImp(ObChangeManagerImp const&) = delete;
    ObChangeManagerImp& operator=(ObChangeManagerImp const&) = delete;

    /// What the functions of subjects and observers do, which say what to expect of them:
    bool attach(ObSubjectLinks& subject, ObObserverLinks& observer);
    bool detach(ObSubjectLinks& subject, ObObserverLinks& observer);
    void notify(ObSubjectLinks& subject, ObHints const& hints);
    void disableUpdates(ObObserverLinks& observer);
    void forget(ObSubjectLinks& subject) noexcept;
    void forget(ObObserverLinks& observer) noexcept;

private:
    class Pass;
    using Guard = std::unique_lock<std::mutex>;

    template <class Predicate>
    static ObLink* find(ObSubjectLinks const& subject, ObObserverLinks const& observer, Predicate predicate) noexcept;
    template <class Step>
    static auto withSubject(ObLink const& link, Step step) noexcept;
    static void markDetached(ObLink& link) noexcept;
    static bool isRunningElsewhere(ObLink const& link) noexcept;
    static void freeIfUnused(ObLink& link) noexcept;
    static void leaveSubject(ObLink& link) noexcept;
    static void leaveObserver(ObLink& link) noexcept;
    void waitForOthers(Guard& guard, ObLink& link) noexcept;
    void stepOff(ObLink& link) noexcept;

    ObNotifierBase& _notifier;
    // For every change of what is linked. A subject's own lock is taken within it, never the other way round.
    std::mutex _mutex;
    std::condition_variable _someoneSteppedOff;
    std::uint64_t _lastNumber = 0;
};

/// The change manager of the tag `Tag`: one in a process, created on first use.
///
/// The header that introduces a tag declares the instantiations, in this order, and one source that includes
/// `obChangeManager.imp.h` makes them:
///
///     extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<Tag>>;
///     extern template class KO_FRAMEWORK_API ObChangeManager<Tag>;
///     extern template class KO_FRAMEWORK_API ObObserver<Tag>;
template <class Tag>
class ObChangeManager : public LkSingleton<ObChangeManager<Tag>> {
public:
    /// What the functions of subjects and observers do, which say what to expect of them:
    bool attachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer);
    bool detachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer);
    void notify(ObSubject<Tag>& subject, ObHints const& hints);
    void disableUpdates(ObObserver<Tag>& observer);
    /// For their destructors:
    static void forget(ObSubject<Tag>& subject) noexcept;
    static void forget(ObObserver<Tag>& observer) noexcept;

private:
    friend class LkSingleton<ObChangeManager<Tag>>;

    ObChangeManager() = default;
    ~ObChangeManager() = default;

    ObNotifier<Tag> _notifier;
    ObChangeManagerImp _imp{_notifier};
};

} // namespace Ko
