#pragma once

#include "resmgt/obObserver.h"
#include "resmgt/obSubject.h"
#include "resmgt/obSubscriber.h"

#include "resmgt/lkSingleton.imp.h"

#include <typeinfo>

namespace Ko {

template <class Tag>
void ObObserver<Tag>::attachedTo(ObSubject<Tag>*) {}
template <class Tag>
void ObObserver<Tag>::detachedFrom(ObSubject<Tag>*) {}

template <class Tag>
void ObNotifier<Tag>::attachedTo(ObObserverLinks& observer, ObSubjectLinks& subject) {
    static_cast<ObObserver<Tag>&>(observer).attachedTo(static_cast<ObSubject<Tag>*>(&subject));
}
template <class Tag>
void ObNotifier<Tag>::detachedFrom(ObObserverLinks& observer, ObSubjectLinks& subject) {
    static_cast<ObObserver<Tag>&>(observer).detachedFrom(static_cast<ObSubject<Tag>*>(&subject));
}
template <class Tag>
void ObNotifier<Tag>::update(ObObserverLinks& observer, ObHints const& hints) {
    auto& typed = static_cast<ObObserver<Tag>&>(observer);
    typed.update(&typed, hints);
}

template <class Tag>
bool ObChangeManager<Tag>::attachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer) {
    if (!observer) RCExUtil::throwExNullPtr(typeid(ObObserver<Tag>).name());
    return _imp.attach(subject, *observer);
}
template <class Tag>
void ObChangeManager<Tag>::attachSubscriber(ObSubject<Tag>& subject, RCShdPtr<ObSubscriber<Tag>> const& subscriber) {
    _imp.attach(subject, *subscriber, RCShdPtr<RCBase>(subscriber.get()));
}
template <class Tag>
bool ObChangeManager<Tag>::detachObserver(ObSubject<Tag>& subject, ObObserver<Tag>* observer) {
    if (!observer) RCExUtil::throwExNullPtr(typeid(ObObserver<Tag>).name());
    return _imp.detach(subject, *observer);
}
template <class Tag>
void ObChangeManager<Tag>::notify(ObSubject<Tag>& subject, ObHints const& hints) {
    _imp.notify(subject, hints);
}
template <class Tag>
void ObChangeManager<Tag>::disableUpdates(ObObserver<Tag>& observer) {
    _imp.disableUpdates(observer);
}

// May outlive the change manager at process exit.
template <class Tag>
void ObChangeManager<Tag>::release(ObObserver<Tag>& observer) noexcept {
    if (ObChangeManager::getState() == ObChangeManager::INITIALIZED)
        ObChangeManager::getInstance()._imp.release(observer);
}
template <class Tag>
void ObChangeManager<Tag>::forget(ObSubject<Tag>& subject) noexcept {
    if (ObChangeManager::getState() == ObChangeManager::INITIALIZED)
        ObChangeManager::getInstance()._imp.forget(subject);
}
template <class Tag>
void ObChangeManager<Tag>::forget(ObObserver<Tag>& observer) noexcept {
    if (ObChangeManager::getState() == ObChangeManager::INITIALIZED)
        ObChangeManager::getInstance()._imp.forget(observer);
}

} // namespace Ko
