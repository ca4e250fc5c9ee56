#pragma once

#include "internalAPI/cbDispatcher.h"

#include "base/rcBase.h"

#include <algorithm>
#include <typeinfo>

namespace Ko {

/// One round of calls; it knows when its dispatcher is destroyed on the way.
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

template <class Argument>
CbDispatcher<Argument>::~CbDispatcher() {
    if (_innermostPass) _innermostPass->kill();
}

template <class Argument>
void CbDispatcher<Argument>::add(CbHandler<Argument>* handler) {
    if (!handler) RCExUtil::throwExNullPtr(typeid(CbHandler<Argument>).name());
    _handlers.push_back(handler);
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
