#pragma once

#include "resmgt/obChangeManager.h"

namespace Ko {

/// Base of receivers of notifications of the tag `Tag`. A class may observe several tags.
///
/// `update` is called on the thread that notifies, on several at once if several notify, and without a lock. There an
/// observer may attach and detach observers, itself included, and may destroy itself.
template <class Tag>
class ObObserver : public ObObserverLinks {
public:
    ObObserver(ObObserver const&) = delete;
    ObObserver& operator=(ObObserver const&) = delete;

protected:
    ObObserver() = default;
    /// Detaches the observer from all subjects; `detachedFrom` is not called any more.
    virtual ~ObObserver() {
        if (wasLinked()) ObChangeManager<Tag>::forget(*this);
    }

    /// No `update` of this observer runs after this, unless the caller is inside one, and none will come. A destructor of
    /// a derived class calls it first where notifications may come from other threads.
    void disableUpdates() {
        disable();
        // Without a change manager, at the begin and at the end of the process, nobody is inside.
        using Manager = ObChangeManager<Tag>;
        if (Manager::getState() == Manager::INITIALIZED) Manager::getInstance().disableUpdates(*this);
    }

private:
    friend class ObNotifier<Tag>;

    /// Called after the observer was attached, on the thread that did it.
    virtual void attachedTo(ObSubject<Tag>* subject);
    /// Called after the observer was detached, also by the subject's end; the subject may be used as a name only then.
    virtual void detachedFrom(ObSubject<Tag>* subject);
    /// @param observer this observer, as the change manager knows it.
    virtual void update(ObObserver const* observer, ObHints const& hints) = 0;
};

} // namespace Ko
