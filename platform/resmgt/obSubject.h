#pragma once

#include "resmgt/obChangeManager.h"
#include "resmgt/obSubscriber.h"

namespace Ko {

/// Base of senders of notifications of the tag `Tag`.
///
/// The destructor detaches all observers. It may run inside a notification of the subject; the remaining observers are not
/// notified then.
template <class Tag>
class ObSubject : public ObSubjectLinks {
public:
    ObSubject(ObSubject const&) = delete;
    ObSubject& operator=(ObSubject const&) = delete;

    /// Attaches an observer. Any thread. @returns false if it was attached already. @throws ExNullPtr for a null pointer.
    bool attachObserver(ObObserver<Tag>* observer) {
        return ObChangeManager<Tag>::getInstance().attachObserver(*this, observer);
    }
    /// Detaches an observer. After this, no `update` of the observer for this subject runs: the call waits for those on other
    /// threads, unless it comes from inside an `update` of that observer. Two threads that are each inside an `update` of one
    /// observer and detach the other thread's observer wait for each other for ever. Any thread.
    /// @returns false if the observer was not attached. @throws ExNullPtr for a null pointer.
    bool detachObserver(ObObserver<Tag>* observer) {
        return ObChangeManager<Tag>::getInstance().detachObserver(*this, observer);
    }
    /// Calls a callable for each notification, until the subscription ends. It has its place among the observers, and is
    /// called without a lock; an exception is logged. Any thread. @throws ExNullPtr for an empty callable.
    [[nodiscard]] ObSubscription subscribe(ObSubscriberBase::Callable callable, ObDelivery delivery) {
        return ObSubscription(connect(std::move(callable), delivery, nullptr));
    }
    /// Calls a callable with the first hint of exactly the class `Hint` in each notification that has one. The rest as above:
    ///
    ///     shown = job->on<BgJobHintProgress>([&](BgJobHintProgress const& step) { bar.set(step.getProgress()); });
    template <class Hint, class Callable>
    [[nodiscard]] ObSubscription on(Callable callable, ObDelivery delivery = ObDelivery::ApplicationThread) {
        return ObSubscription(
            connect([callable = std::move(callable)](ObHints const& hints) { callable(*hints.findHint<Hint>()); },
                delivery, [](ObHints const& hints) { return hints.findHint<Hint>() != nullptr; }));
    }
    /// Calls `update` of all attached observers on this thread, in the order of their attachment and without a lock. Observers
    /// that are attached meanwhile are notified the next time. An exception from an observer is logged. Any thread.
    void notify(ObHints const& hints) {
        if (hasObservers()) ObChangeManager<Tag>::getInstance().notify(*this, hints);
    }

protected:
    ObSubject() = default;
    /// Implements `subscribe`. @param filter null for all hints.
    RCShdPtr<ObSubscriber<Tag>> connect(
        ObSubscriberBase::Callable callable, ObDelivery delivery, ObSubscriberBase::Filter filter) {
        auto subscriber = RCShdPtr<ObSubscriber<Tag>>::create(std::move(callable), delivery, filter);
        ObChangeManager<Tag>::getInstance().attachSubscriber(*this, subscriber);
        return subscriber;
    }
    ~ObSubject() {
        if (wasLinked()) ObChangeManager<Tag>::forget(*this);
    }
};

} // namespace Ko
