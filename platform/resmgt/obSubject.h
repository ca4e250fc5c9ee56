#pragma once

#include "resmgt/obChangeManager.h"

namespace Ko {

/// Base of what observers are told about: the sender of notifications of the tag `Tag`.
///
/// The destructor detaches all observers. It may run inside an `update` that the subject itself has caused; the observers
/// that were still to be told are not told then.
template <class Tag>
class ObSubject : public ObSubjectLinks {
public:
    ObSubject(ObSubject const&) = delete;
    ObSubject& operator=(ObSubject const&) = delete;

    /// Any thread. @returns false when the observer was attached already. @throws ExNullPtr for a null pointer.
    bool attachObserver(ObObserver<Tag>* observer) {
        return ObChangeManager<Tag>::getInstance().attachObserver(*this, observer);
    }
    /// After this no `update` of the observer for this subject runs, unless the caller is inside an `update` of it, and
    /// none will come. Any thread. @returns false when the observer was not attached.
    bool detachObserver(ObObserver<Tag>* observer) {
        return ObChangeManager<Tag>::getInstance().detachObserver(*this, observer);
    }
    /// Calls `update` of the observers that are attached now, in the order in which they were attached, on this thread and
    /// without a lock. Those that are attached meanwhile are told the next time. What an observer throws is logged, and
    /// the others are told. Any thread.
    void notify(ObHints const& hints) {
        if (hasObservers()) ObChangeManager<Tag>::getInstance().notify(*this, hints);
    }

protected:
    ObSubject() = default;
    ~ObSubject() {
        if (wasLinked()) ObChangeManager<Tag>::forget(*this);
    }
};

} // namespace Ko
