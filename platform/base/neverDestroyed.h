#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace Ko {

/// An object without a destructor call, for a static variable that other static objects and other threads may use until
/// the process has ended:
///
///     static NeverDestroyed<Registry> registry;
///     return *registry;
///
/// It lies in the variable itself, so that it costs no allocation.
template <class T>
class NeverDestroyed {
public:
    /// Builds the object from these arguments; without arguments its members get their initial values.
    template <class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) {
        std::construct_at(reinterpret_cast<T*>(_memory), std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(NeverDestroyed const&) = delete;
    NeverDestroyed& operator=(NeverDestroyed const&) = delete;

    /// Thread-safe as far as the object itself is.
    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(_memory)); }

private:
    alignas(T) std::byte _memory[sizeof(T)];
};

} // namespace Ko
