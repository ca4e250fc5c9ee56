#pragma once

#include "base/inSingleton.h"

#include <memory>
#include <typeinfo>
#include <utility>

namespace Ko {

template <class T>
typename InSingleton<T>::State InSingleton<T>::_state = InSingleton<T>::UNINITIALIZED;
template <class T>
T* InSingleton<T>::_pointee = nullptr;

namespace InSingletonSource {
// The place that all exceptions name, whichever source instantiates the singleton.
constexpr char const* file = ".\\base/inSingleton.imp.h";
constexpr int initializedTwice = 60;
constexpr int initializedAfterDestruction = 65;
constexpr int finalizedBeforeInitialization = 83;
constexpr int finalizedTwice = 88;
constexpr int usedOutsideLifetime = 104;
} // namespace InSingletonSource

template <class T>
void InSingleton<T>::performInitialize() {
    // A local class has the access of this one, which T befriends.
    struct Deleter {
        void operator()(T* object) const { delete object; }
    };
    std::unique_ptr<T, Deleter> created(new T);
    if (_state == INITIALIZED)
        throw InSingletonEx::ExAlreadyInitialized(
            InSingletonSource::file, InSingletonSource::initializedTwice, typeid(T).name());
    if (_state == DESTROYED)
        throw InSingletonEx::ExAlreadyDestroyed(
            InSingletonSource::file, InSingletonSource::initializedAfterDestruction, typeid(T).name());
    _pointee = created.release();
    _state = INITIALIZED;
}

template <class T>
T& InSingleton<T>::getInstance() {
    if (_state != INITIALIZED) [[unlikely]]
        throw InSingletonEx::ExNotInitialized(
            InSingletonSource::file, InSingletonSource::usedOutsideLifetime, typeid(T).name());
    return *_pointee;
}

template <class T>
void InSingleton<T>::performFinalize() {
    if (_state == UNINITIALIZED)
        throw InSingletonEx::ExNotInitialized(
            InSingletonSource::file, InSingletonSource::finalizedBeforeInitialization, typeid(T).name());
    if (_state == DESTROYED)
        throw InSingletonEx::ExAlreadyDestroyed(
            InSingletonSource::file, InSingletonSource::finalizedTwice, typeid(T).name());
    delete _pointee;
    _state = DESTROYED;
    _pointee = nullptr;
}

template <class T>
bool InSingleton<T>::isInitialized() noexcept {
    return _state == INITIALIZED;
}

} // namespace Ko
