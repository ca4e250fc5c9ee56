#pragma once

#include "internalAPI/cbDispatcher.h"

#include "base/exBase.h"
#include "base/rcBase.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <typeinfo>

namespace Ko {

template <class Argument>
class CbDispatcher<Argument>::Pass {
public:
    explicit Pass(CbDispatcher& dispatcher) noexcept : _dispatcher(dispatcher) { ++_dispatcher._passes; }
    ~Pass() {
        if (--_dispatcher._passes > 0 || !_dispatcher._hasGaps) return;
        std::erase(_dispatcher._handlers, nullptr);
        _dispatcher._hasGaps = false;
    }
    Pass(Pass const&) = delete;
    Pass& operator=(Pass const&) = delete;

private:
    CbDispatcher& _dispatcher;
};

template <class Argument>
void CbDispatcher<Argument>::add(CbHandler<Argument>* handler) {
    if (!handler) RCExUtil::throwExNullPtr(typeid(CbHandler<Argument>).name());
    _handlers.push_back(handler);
}

template <class Argument>
void CbDispatcher<Argument>::remove(CbHandler<Argument>* handler) noexcept {
    auto const found = std::find(_handlers.begin(), _handlers.end(), handler);
    if (!handler || found == _handlers.end()) return;
    if (_passes == 0) {
        _handlers.erase(found);
        return;
    }
    *found = nullptr;
    _hasGaps = true;
}

template <class Argument>
void CbDispatcher<Argument>::call(Argument const& argument) {
    LgFirstError error("A callback");
    {
        Pass const pass(*this);
        std::size_t const present = _handlers.size();
        for (std::size_t index = 0; index < present; ++index)
            if (CbHandler<Argument>* const handler = _handlers[index]) error.capture([&] { handler->call(argument); });
    }
    error.rethrow();
}

} // namespace Ko
