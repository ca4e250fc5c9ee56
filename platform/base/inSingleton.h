#pragma once

#include "base/baseApi.h"
#include "base/exBase.h"

namespace Ko {

/// Base of the exceptions for a singleton that is used outside of its life; the reason names the singleton's class.
class KO_BASE_API InSingletonEx : public ExBase {
public:
    class ExAlreadyInitialized;
    class ExNotInitialized;
    class ExAlreadyDestroyed;

protected:
    InSingletonEx(char const* file, int line, char const* type, char const* problem);
};

/// The object cannot be created, as it exists.
class KO_BASE_API InSingletonEx::ExAlreadyInitialized : public InSingletonEx {
public:
    /// @param type as `typeid(T).name()`.
    ExAlreadyInitialized(char const* file, int line, char const* type);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// The object cannot be used or destroyed, as it does not exist.
class KO_BASE_API InSingletonEx::ExNotInitialized : public InSingletonEx {
public:
    /// @param type as `typeid(T).name()`.
    ExNotInitialized(char const* file, int line, char const* type);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// The object cannot be created or destroyed after its end.
class KO_BASE_API InSingletonEx::ExAlreadyDestroyed : public InSingletonEx {
public:
    /// @param type as `typeid(T).name()`.
    ExAlreadyDestroyed(char const* file, int line, char const* type);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// The one object of a class that a package's initialise hook creates and its finalise hook destroys.
///
/// It lives once: after `performFinalize()` it cannot be created again. No locks: `performInitialize()` and
/// `performFinalize()` are called on one thread while no other thread uses the object. A call that fails changes nothing.
///
/// The header of `T` declares the instantiation and one source that includes `inSingleton.imp.h` makes it, so that there
/// is one object in the whole process, plug-ins included:
///
///     extern template class KO_FRAMEWORK_API InSingleton<T>; // header
///     template class InSingleton<T>;                         // source
template <class T>
class InSingleton {
public:
    /// The stages of the object's life, in their order.
    enum State { UNINITIALIZED = 0, INITIALIZED = 1, DESTROYED = 2 };

    /// Creates the object.
    /// @throws InSingletonEx::ExAlreadyInitialized, InSingletonEx::ExAlreadyDestroyed, and exceptions of the constructor.
    static void performInitialize();
    /// The object.
    /// @throws InSingletonEx::ExNotInitialized outside of the object's life.
    static T& getInstance();
    /// Destroys the object.
    /// @throws InSingletonEx::ExNotInitialized, InSingletonEx::ExAlreadyDestroyed.
    static void performFinalize();
    /// Whether the object exists now.
    [[nodiscard]] static bool isInitialized() noexcept;

protected:
    InSingleton() = default;
    ~InSingleton() = default;

private:
    static State _state;
    static T* _pointee;
};

} // namespace Ko
