#pragma once

#include "resmgt/lkSingleton.h"

#include "base/assertions.h"

#include <memory>
#include <mutex>

namespace Ko {

namespace LkSingletonSource {
// Misuse of all singletons is reported with this source and these lines, wherever they are instantiated.
constexpr AssertionSource source{".\\resmgt/lkSingleton.imp.h"};
constexpr int neverRecreated = 124;
constexpr int created = 128;
constexpr int unknownStateName = 199;
constexpr int uninitializedHasNone = 214;
constexpr int initializedHasOne = 218;
constexpr int destroyedHasNone = 222;
constexpr int unknownState = 226;
} // namespace LkSingletonSource

/// Destroys the object when the program ends.
template <class T>
class LkSingleton<T>::Destroyer {
public:
    ~Destroyer() {
        std::lock_guard const guard(lockAt(_finalLock, "LkSingletonDestroyer final lock"));
        // Deleted before the state changes: the destructor may still use the singleton.
        if (_state == INITIALIZED) delete _pointee.load();
        _pointee = nullptr;
        // Also if the object was never created: a later use must fail rather than create it.
        _state = DESTROYED;
    }

private:
    static inline std::atomic<LkLock*> _finalLock{nullptr};
};

template <class T>
std::atomic<typename LkSingleton<T>::State> LkSingleton<T>::_state{LkSingleton<T>::UNINITIALIZED};
template <class T>
std::atomic<T*> LkSingleton<T>::_pointee{nullptr};
template <class T>
std::atomic<LkLock*> LkSingleton<T>::_initLock{nullptr};
template <class T>
typename LkSingleton<T>::Destroyer LkSingleton<T>::_destroyer;

template <class T>
T& LkSingleton<T>::getInstance() {
    if (_state.load(std::memory_order_acquire) != INITIALIZED) initSingleton();
    return *_pointee.load(std::memory_order_relaxed);
}

template <class T>
typename LkSingleton<T>::State LkSingleton<T>::getState() noexcept {
    return _state;
}

template <class T>
char const* LkSingleton<T>::getStateName() {
    switch (getState()) {
    case UNINITIALIZED:
        return "UNINITIALIZED";
    case INITIALIZED:
        return "INITIALIZED";
    case DESTROYED:
        return "DESTROYED";
    }
    LkSingletonSource::source.abort("A singleton is in an unknown state.", LkSingletonSource::unknownStateName);
}

template <class T>
void LkSingleton<T>::checkClassInvariants() {
    using namespace LkSingletonSource;
    T const* const object = _pointee;
    switch (getState()) {
    case UNINITIALIZED:
        return source.require(object == nullptr, "_pointee == 0", uninitializedHasNone);
    case INITIALIZED:
        return source.require(object != nullptr, "_pointee != 0", initializedHasOne);
    case DESTROYED:
        return source.require(object == nullptr, "_pointee == 0", destroyedHasNone);
    }
    source.abort("A singleton is in an unknown state.", unknownState);
}

template <class T>
void LkSingleton<T>::initSingleton() {
    using namespace LkSingletonSource;
    static_cast<void>(&_destroyer); // instantiates it
    std::lock_guard const guard(lockAt(_initLock, "LkSingleton init lock"));
    if (_state == INITIALIZED) return;
    source.require(_state == UNINITIALIZED, "_state == UNINITIALIZED", neverRecreated);
    T* const pointee = new T;
    source.require(pointee != nullptr, "pointee", created);
    _pointee.store(pointee, std::memory_order_relaxed);
    _state.store(INITIALIZED, std::memory_order_release);
}

// The first thread installs the lock, which is never freed.
template <class T>
LkLock& LkSingleton<T>::lockAt(std::atomic<LkLock*>& lock, char const* name) {
    if (LkLock* const installed = lock) return *installed;
    auto created = std::make_unique<LkLock>(name);
    LkLock* none = nullptr;
    return lock.compare_exchange_strong(none, created.get()) ? *created.release() : *none;
}

} // namespace Ko
