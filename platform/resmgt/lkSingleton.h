#pragma once

#include "base/lkLock.h"
#include "resmgt/resmgtApi.h"

#include <atomic>

namespace Ko {

/// The one object of a class that is created on first use, from any thread, and destroyed when the program ends. Once
/// destroyed it is never created again.
///
/// The header of `T` declares the instantiation and one source that includes `lkSingleton.imp.h` makes it, so that there
/// is one object in the whole process, plug-ins included. A `T` with protected constructor befriends `LkSingleton<T>`.
///
///     extern template class KO_FRAMEWORK_API LkSingleton<T>; // header
///     template class LkSingleton<T>;                         // source
template <class T>
class LkSingleton {
public:
    /// The stages of the object's life, in their order.
    enum State { UNINITIALIZED = 0, INITIALIZED = 1, DESTROYED = 2 };

    /// @throws ExAssertionFailed after the object was destroyed, and what the constructor throws.
    static T& getInstance();
    /// Does not create the object; the name is for diagnosis:
    static State getState() noexcept;
    static char const* getStateName();
    /// @throws ExAssertionFailed when state and object disagree.
    static void checkClassInvariants();

private:
    class Destroyer;

    static void initSingleton();
    static LkLock& lockAt(std::atomic<LkLock*>& lock, char const* name);

    // The state is stored after the object and loaded before it: a thread that sees INITIALIZED sees the object whole.
    static std::atomic<State> _state;
    static std::atomic<T*> _pointee;
    static std::atomic<LkLock*> _initLock;
    static Destroyer _destroyer;
};

} // namespace Ko
