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
template <class Tag>
class ObSubscriber;
struct ObLink;

/// The data of the change manager in a subject: the links to its observers.
class KO_RESMGT_API ObSubjectLinks {
public:
    /// Whether the subject has observers at present. Any thread.
    [[nodiscard]] bool hasObservers() const noexcept { return _first.load(std::memory_order_relaxed) != nullptr; }

protected:
    ObSubjectLinks() = default;
    ~ObSubjectLinks() = default;
    /// Whether the subject has ever had an observer.
    bool wasLinked() const noexcept { return _wasLinked; }

private:
    friend class ObChangeManagerImp;

    // Taken once for each observer in a notification, and held for some nanoseconds. A mutex would double the cost of a
    // notification.
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

/// The data of the change manager in an observer: the links to its subjects.
class KO_RESMGT_API ObObserverLinks {
protected:
    ObObserverLinks() = default;
    ~ObObserverLinks() = default;
    /// Excludes the observer from all notifications from now on.
    void disable() noexcept { _updatesEnabled = false; }
    /// Whether the observer was ever attached.
    bool wasLinked() const noexcept { return _wasLinked; }

private:
    friend class ObChangeManagerImp;

    ObLink* _first = nullptr;
    std::atomic<bool> _updatesEnabled{true};
    bool _wasLinked = false;
};

/// Calls the observers of one tag, for the change manager.
class KO_RESMGT_API ObNotifierBase {
public:
    virtual ~ObNotifierBase();
    /// Calls `ObObserver::attachedTo`.
    virtual void attachedTo(ObObserverLinks& observer, ObSubjectLinks& subject) = 0;
    /// Calls `ObObserver::detachedFrom`.
    virtual void detachedFrom(ObObserverLinks& observer, ObSubjectLinks& subject) = 0;
    /// Calls `ObObserver::update`.
    virtual void update(ObObserverLinks& observer, ObHints const& hints) = 0;
};

/// Calls the observers of the tag `Tag`.
template <class Tag>
class ObNotifier final : public ObNotifierBase {
public:
    void attachedTo(ObObserverLinks& observer, ObSubjectLinks& subject) override;
    void detachedFrom(ObObserverLinks& observer, ObSubjectLinks& subject) override;
    void update(ObObserverLinks& observer, ObHints const& hints) override;
};

/// Links observers to subjects, and notifies them. Any thread.
///
/// No lock is held while an observer is called. The cost of a notification depends only on the number of observers of its
/// subject; the costs of attaching and detaching do not depend on the number of other subjects and observers.
class KO_RESMGT_API ObChangeManagerImp {
public:
    /// @param notifier is not owned.
    explicit ObChangeManagerImp(ObNotifierBase& notifier) noexcept : _notifier(notifier) {}
    ObChangeManagerImp(ObChangeManagerImp const&) = delete;
    ObChangeManagerImp& operator=(ObChangeManagerImp const&) = delete;

    /// Implements `ObSubject::attachObserver`.
    /// @param owner kept for as long as the observer is attached or notified; null if the observer ends its attachment itself.
    bool attach(ObSubjectLinks& subject, ObObserverLinks& observer, RCShdPtr<RCBase> owner = {});
    /// Implements `ObSubject::detachObserver`.
    bool detach(ObSubjectLinks& subject, ObObserverLinks& observer);
    /// Implements `ObSubject::notify`.
    void notify(ObSubjectLinks& subject, ObHints const& hints);
    /// Implements `ObObserver::disableUpdates`.
    void disableUpdates(ObObserverLinks& observer);
    /// Ends the attachments of an observer that has an owner, without a wait for its updates.
    void release(ObObserverLinks& observer) noexcept;
    /// Implements the destructor of `ObSubject`.
    void forget(ObSubjectLinks& subject) noexcept;
    /// Implements the destructor of `ObObserver`.
    void forget(ObObserverLinks& observer) noexcept;

private:
    class Pass;
    class Guard;

    template <class Predicate>
    static ObLink* find(ObSubjectLinks const& subject, ObObserverLinks const& observer, Predicate predicate) noexcept;
    template <class Step>
    static auto withSubject(ObLink const& link, Step step) noexcept;
    static bool hasLinks(ObSubjectLinks& subject) noexcept;
    static void markDetached(ObLink& link) noexcept;
    static bool isRunningElsewhere(ObLink const& link) noexcept;
    static void freeIfUnused(Guard& guard, ObLink& link, bool detaches = false) noexcept;
    static bool leaveSubjectIfUnused(ObLink& link) noexcept;
    static void leaveSubject(ObLink& link) noexcept;
    static void leaveObserver(ObLink& link) noexcept;
    void waitForOthers(Guard& guard, ObLink& link) noexcept;
    void leaveLink(Guard& guard, ObLink& link) noexcept;

    ObNotifierBase& _notifier;
    // Guards all links. The lock of a subject is taken while this one is held, never the other way round.
    std::mutex _mutex;
    std::condition_variable _linkIsUnused;
    std::uint64_t _lastNumber = 0;
};

/// The change manager of the tag `Tag`: one per process, created on first use.
///
/// The header that introduces a tag declares the instantiations, in this order, and one source that includes
/// `obChangeManager.imp.h` defines them:
///
///     extern template class KO_FRAMEWORK_API LkSingleton<ObChangeManager<Tag>>;
///     extern template class KO_FRAMEWORK_API ObChangeManager<Tag>;
///     extern template class KO_FRAMEWORK_API ObObserver<Tag>;
template <class Tag>
class ObChangeManager : public LkSingleton<ObChangeManager<Tag>> {
public:
    /// Implements `ObSubject::attachObserver`.
    bool attachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer);
    /// Implements `ObSubject::subscribe`.
    void attachSubscriber(ObSubject<Tag>& subject, RCShdPtr<ObSubscriber<Tag>> const& subscriber);
    /// Implements the end of a subscription.
    static void release(ObObserver<Tag>& observer) noexcept;
    /// Implements `ObSubject::detachObserver`.
    bool detachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer);
    /// Implements `ObSubject::notify`.
    void notify(ObSubject<Tag>& subject, ObHints const& hints);
    /// Implements `ObObserver::disableUpdates`.
    void disableUpdates(ObObserver<Tag>& observer);
    /// Implements the destructor of `ObSubject`.
    static void forget(ObSubject<Tag>& subject) noexcept;
    /// Implements the destructor of `ObObserver`.
    static void forget(ObObserver<Tag>& observer) noexcept;

private:
    friend class LkSingleton<ObChangeManager<Tag>>;

    ObChangeManager() = default;
    ~ObChangeManager() = default;

    ObNotifier<Tag> _notifier;
    ObChangeManagerImp _imp{_notifier};
};

} // namespace Ko
