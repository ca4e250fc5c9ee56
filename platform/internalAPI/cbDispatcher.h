#pragma once

#include "base/rcBase.h"
#include "internalAPI/cbSubscription.h"
#include "internalAPI/internalAPIApi.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/liString.h"

#include <functional>
#include <type_traits>

namespace Ko {

/// The argument of callbacks that carry none.
struct CbEmptyType {};

/// Receives callbacks.
template <class Argument>
class CbHandler : public RCBase {
public:
    /// Receives one callback. The dispatcher calls the other handlers before it passes on what this throws.
    virtual void call(Argument const& argument) = 0;

protected:
    CbHandler() = default;
    ~CbHandler() override = default;
};

/// Calls its handlers in the order of their registration. One thread.
///
/// Handlers may be added and removed, themselves included, while they are called: one that is removed is not called any
/// more, one that is added is called from the next time on. A handler registered twice is called twice. A handler may
/// also destroy the dispatcher; the remaining ones are not called then.
template <class Argument>
class CbDispatcher {
public:
    /// What `subscribe` takes: a function of the argument, or of nothing where the argument is empty.
    using Callable = std::conditional_t<std::is_same_v<Argument, CbEmptyType>, std::function<void()>,
        std::function<void(Argument const&)>>;

    CbDispatcher() = default;
    ~CbDispatcher();
    CbDispatcher(CbDispatcher const&) = delete;
    CbDispatcher& operator=(CbDispatcher const&) = delete;

    /// @param handler is not owned and must be removed before it is destroyed; not null.
    void add(CbHandler<Argument>* handler);
    /// Removes one registration of the handler; an unknown handler is ignored.
    void remove(CbHandler<Argument>* handler) noexcept;
    /// Registers a callable until the result ends; not empty. It takes its turn among the handlers, under the same rules.
    [[nodiscard]] CbSubscription subscribe(Callable callable);
    /// Whether no handler is registered.
    [[nodiscard]] bool isEmpty() const noexcept { return _handlers.empty(); }

    /// Calls every handler, whatever another one throws.
    /// @throws the first exception of a handler, after all were called; further ones are logged.
    void call(Argument const& argument);
    /// Calls every handler and leaves what they throw in `error`, for callers that have more to do.
    /// @returns whether this dispatcher still exists.
    bool call(Argument const& argument, LgFirstError& error);

private:
    class Pass;
    class Connection;

    // A handler that is removed during a pass leaves a null pointer, which the outermost pass takes out at its end.
    Vector<CbHandler<Argument>*> _handlers;
    Pass* _innermostPass = nullptr;
    // The subscriptions, linked in any order, so that they can outlive the dispatcher.
    Connection* _connections = nullptr;
    bool _hasGaps = false;
};

extern template class KO_INTERNALAPI_API CbDispatcher<CbEmptyType>;

} // namespace Ko
