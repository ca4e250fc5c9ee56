#pragma once

#include "resmgt/obChangeManager.h"

namespace Ko {

/// Base of receivers of notifications of the tag `Tag`. A class may observe several tags.
///
/// `update` is called on the notifying thread, without a lock, and by several threads at once if several notify. It may
/// attach and detach observers, including this one. It may destroy this observer if no other thread can be inside its
/// `update` at that time: no function can wait for those threads there, as they might wait for this one in the same way.
template <class Tag>
class ObObserver : public ObObserverLinks {
public:
    ObObserver(ObObserver const&) = delete;
    ObObserver& operator=(ObObserver const&) = delete;

protected:
    ObObserver() = default;
    /// Detaches the observer from all subjects, without calls of `detachedFrom`.
    virtual ~ObObserver() {
        if (wasLinked()) ObChangeManager<Tag>::forget(*this);
    }

    /// Ends all notifications of this observer: no `update` runs after this call, which waits for those on other threads. A
    /// call from inside an `update` of this observer does not wait. The destructor of a derived class calls it first if other
    /// threads may notify.
    void disableUpdates() {
        disable();
        // Without a change manager, at the start and the end of the process, no notification runs.
        using Manager = ObChangeManager<Tag>;
        if (Manager::getState() == Manager::INITIALIZED) Manager::getInstance().disableUpdates(*this);
    }

private:
    friend class ObNotifier<Tag>;

    /// Called after the observer was attached to a subject, on the attaching thread.
    virtual void attachedTo(ObSubject<Tag>* subject);
    /// Called after the observer was detached from a subject, also by the destructor of the subject: use the pointer only as
    /// an identifier.
    virtual void detachedFrom(ObSubject<Tag>* subject);
    /// Called for each notification of a subject. An exception is logged, and the other observers are notified.
    /// @param observer this observer.
    virtual void update(ObObserver const* observer, ObHints const& hints) = 0;
};

} // namespace Ko
