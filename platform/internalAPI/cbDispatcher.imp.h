#pragma once

#include "internalAPI/cbDispatcher.h"

#include "base/rcBase.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Ko {

/// One pass over the handlers. `kill()` is called when the dispatcher is destroyed during the pass.
template <class Argument>
class CbDispatcher<Argument>::Pass {
public:
    explicit Pass(CbDispatcher& dispatcher) noexcept : _dispatcher(&dispatcher), _outer(dispatcher._innermostPass) {
        dispatcher._innermostPass = this;
    }
    ~Pass() {
        if (!_dispatcher) return;
        _dispatcher->_innermostPass = _outer;
        if (_outer || !_dispatcher->_hasGaps) return;
        std::erase(_dispatcher->_handlers, nullptr);
        _dispatcher->_hasGaps = false;
    }
    Pass(Pass const&) = delete;
    Pass& operator=(Pass const&) = delete;

    bool isAlive() const noexcept { return _dispatcher != nullptr; }
    void kill() noexcept {
        _dispatcher = nullptr;
        if (_outer) _outer->kill();
    }

private:
    CbDispatcher* _dispatcher;
    Pass* _outer;
};

/// The handler of one subscription. Owned by the subscription, and by itself while its callable runs.
template <class Argument>
class CbDispatcher<Argument>::Connection : public CbConnection {
public:
    Connection(CbDispatcher& dispatcher, Callable callable) : _handler(*this, std::move(callable)) {
        dispatcher.add(&_handler);
        _dispatcher = &dispatcher;
        _next = std::exchange(dispatcher._connections, this);
        if (_next) _next->_previous = this;
    }

    void disconnect() noexcept override {
        if (!_dispatcher) return;
        _dispatcher->remove(&_handler);
        (_previous ? _previous->_next : _dispatcher->_connections) = _next;
        if (_next) _next->_previous = _previous;
        _dispatcher = nullptr;
    }
    /// The dispatcher is being destroyed.
    static void abandon(Connection* connection) noexcept {
        for (; connection; connection = connection->_next)
            connection->_dispatcher = nullptr;
    }

private:
    class Handler : public CbHandler<Argument> {
    public:
        Handler(Connection& owner, Callable callable) noexcept : _owner(owner), _callable(std::move(callable)) {}
        void call(Argument const& argument) override {
            RCShdPtr<Connection> const alive(&_owner);
            if constexpr (std::is_same_v<Argument, CbEmptyType>)
                _callable();
            else
                _callable(argument);
        }

    private:
        Connection& _owner;
        Callable _callable;
    };

    Handler _handler;
    CbDispatcher* _dispatcher = nullptr;
    Connection* _previous = nullptr;
    Connection* _next = nullptr;
};

template <class Argument>
CbDispatcher<Argument>::~CbDispatcher() {
    Connection::abandon(_connections);
    if (_innermostPass) _innermostPass->kill();
}

template <class Argument>
void CbDispatcher<Argument>::add(CbHandler<Argument>* handler) {
    if (!handler) RCExUtil::throwExNullPtr(typeid(CbHandler<Argument>).name());
    _handlers.push_back(handler);
}

template <class Argument>
CbSubscription CbDispatcher<Argument>::subscribe(Callable callable) {
    if (!callable) RCExUtil::throwExNullPtr(typeid(Callable).name());
    return CbSubscription(RCShdPtr<Connection>::create(*this, std::move(callable)));
}

template <class Argument>
void CbDispatcher<Argument>::remove(CbHandler<Argument>* handler) noexcept {
    auto const found = std::find(_handlers.begin(), _handlers.end(), handler);
    if (!handler || found == _handlers.end()) return;
    if (!_innermostPass) {
        _handlers.erase(found);
        return;
    }
    *found = nullptr;
    _hasGaps = true;
}

template <class Argument>
void CbDispatcher<Argument>::call(Argument const& argument) {
    LgFirstError error("A callback");
    call(argument, error);
    error.rethrow();
}

template <class Argument>
bool CbDispatcher<Argument>::call(Argument const& argument, LgFirstError& error) {
    Pass const pass(*this);
    std::size_t const present = _handlers.size();
    for (std::size_t index = 0; index < present; ++index) {
        if (CbHandler<Argument>* const handler = _handlers[index]) error.capture([&] { handler->call(argument); });
        if (!pass.isAlive()) return false;
    }
    return true;
}

} // namespace Ko
