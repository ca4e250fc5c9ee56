#pragma once

#include "base/lkLock.h"
#include "resmgt/resmgtApi.h"

#include <atomic>

namespace Ko {

/// The only object of a class, created on first use by any thread and destroyed when the program ends. It is never created
/// again after that.
///
/// The header of `T` declares the instantiation, and one source that includes `lkSingleton.imp.h` defines it, so that the
/// whole process, plug-ins included, has one object. A `T` with a protected constructor befriends `LkSingleton<T>`.
///
///     extern template class KO_FRAMEWORK_API LkSingleton<T>; // header
///     template class LkSingleton<T>;                         // source
template <class T>
class LkSingleton {
public:
    /// The stages of the lifetime, in their order.
    enum State { UNINITIALIZED = 0, INITIALIZED = 1, DESTROYED = 2 };

    /// The object. The first call creates it, under a lock: the constructor must not ask for it again.
    /// @throws ExAssertionFailed after the object was destroyed, and what the constructor throws.
    static T& getInstance();
    /// The present stage. Does not create the object.
    [[nodiscard]] static State getState() noexcept;
    /// The name of the present stage, for diagnosis. Does not create the object.
    [[nodiscard]] static char const* getStateName();
    /// Checks that the stage and the object agree. @throws ExAssertionFailed if not.
    static void checkClassInvariants();

private:
    class Destroyer;

    static void initSingleton();
    static LkLock& lockAt(std::atomic<LkLock*>& lock, char const* name);

    // The state is stored after the object and loaded before it: a thread that sees INITIALIZED sees the complete object.
    static std::atomic<State> _state;
    static std::atomic<T*> _pointee;
    static std::atomic<LkLock*> _initLock;
    static Destroyer _destroyer;
};

} // namespace Ko
