#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Ko {

/// A function object to be called once on the application thread. It need not be copyable. A small one, which can be moved
/// without exceptions, is stored without an allocation; the queue may then call its move constructor under a lock.
class EvRequestEvent {
public:
    /// Stores a function object, which is called without arguments.
    template <class Request>
    requires(!std::is_same_v<std::remove_cvref_t<Request>, EvRequestEvent>) explicit EvRequestEvent(Request&& request) {
        using Stored = std::decay_t<Request>;
        if constexpr (fits<Stored>)
            store<Stored>(std::forward<Request>(request));
        else
            store<OnHeap<Stored>>(std::make_unique<Stored>(std::forward<Request>(request)));
    }
    EvRequestEvent(EvRequestEvent&& other) noexcept : _operations(other._operations) {
        _operations->move(&_storage, &other._storage);
    }
    EvRequestEvent& operator=(EvRequestEvent&& other) noexcept {
        if (this == &other) return *this;
        _operations->destroy(&_storage);
        _operations = other._operations;
        _operations->move(&_storage, &other._storage);
        return *this;
    }
    ~EvRequestEvent() { _operations->destroy(&_storage); }

    /// Calls the function object. @throws what the function object throws.
    void operator()() { _operations->call(&_storage); }

private:
    struct Operations {
        void (*call)(void* storage);
        void (*move)(void* to, void* from) noexcept;
        void (*destroy)(void* storage) noexcept;
    };

    static constexpr std::size_t size = 3 * sizeof(void*);

    template <class Stored>
    static constexpr bool fits = sizeof(Stored) <= size &&
                                 alignof(Stored) <= alignof(void*) && std::is_nothrow_move_constructible_v<Stored>;

    template <class Stored>
    struct OnHeap {
        explicit OnHeap(std::unique_ptr<Stored> stored) noexcept : request(std::move(stored)) {}
        void operator()() { (*request)(); }
        std::unique_ptr<Stored> request;
    };

    template <class Stored>
    static Stored& at(void* storage) noexcept {
        return *std::launder(static_cast<Stored*>(storage));
    }
    template <class Stored>
    static constexpr Operations operationsOf{[](void* storage) { at<Stored>(storage)(); },
        [](void* to, void* from) noexcept { ::new (to) Stored(std::move(at<Stored>(from))); },
        [](void* storage) noexcept { at<Stored>(storage).~Stored(); }};

    template <class Stored, class Source>
    void store(Source&& source) {
        ::new (&_storage) Stored(std::forward<Source>(source));
        _operations = &operationsOf<Stored>;
    }

    alignas(void*) std::byte _storage[size];
    Operations const* _operations;
};

} // namespace Ko
