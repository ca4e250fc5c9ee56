#pragma once

#include "internalAPI/cbChanges.h"

#include "internalAPI/cbDispatcher.imp.h"

#include <utility>

namespace Ko {

template <class Change>
CbChanges<Change>::CbChanges(char const* context, Change unknown) : _context(context), _unknown(std::move(unknown)) {}

template <class Change>
CbSubscription CbChanges<Change>::subscribe(std::function<void(Change const&)> callable) {
    if (!callable) RCExUtil::throwExNullPtr(typeid(callable).name());
    return _dispatcher.subscribe([this, first = _numMade, callable = std::move(callable)](Change const& change) {
        if (_delivered >= first) callable(change);
    });
}

template <class Change>
void CbChanges<Change>::notify(Prepared& change) noexcept {
    ++_numMade;
    _waiting.splice(_waiting.end(), change);
    deliverAll();
}

template <class Change>
void CbChanges<Change>::notifyUnknown() noexcept {
    ++_numMade;
    _isUnknown = true;
    deliverAll();
}

template <class Change>
void CbChanges<Change>::deliverAll() noexcept {
    if (std::exchange(_isDelivering, true)) return;
    while (_isUnknown || !_waiting.empty()) {
        Prepared present;
        if (std::exchange(_isUnknown, false)) {
            present.swap(_waiting); // the unknown change includes them
            deliver(_unknown, _numMade - 1);
        } else {
            std::uint64_t const number = _numMade - _waiting.size();
            present.splice(present.end(), _waiting, _waiting.begin());
            deliver(present.front(), number);
        }
    }
    _isDelivering = false;
}

template <class Change>
void CbChanges<Change>::deliver(Change const& change, std::uint64_t number) noexcept {
    _delivered = number;
    LgFirstError error(_context);
    error.capture([&] { _dispatcher.call(change, error); });
    error.log();
}

} // namespace Ko
