#include "framework/command/src/cmGuardHooks.h"

#include "internalAPI/cbDispatcher.imp.h"

#include <utility>

namespace Ko {

template class CbDispatcher<bool>;

// Hooks may register further extensions and callbacks, so each one is copied before it is called.

void GuardHooks::begin(bool isLongTransition) {
    std::size_t begun = 0;
    try {
        for (std::size_t const count = _extensions.size(); begun < count; ++begun) {
            RCShdPtr<CmUndoGuardExtension> const extension = _extensions[begun];
            extension->beginOutermostGuard(isLongTransition);
        }
    } catch (...) {
        LgFirstError error("The end hook of an undo guard that could not be entered");
        endExtensions(begun, isLongTransition, error);
        error.log();
        throw;
    }
}

void GuardHooks::end(bool isLongTransition, LgFirstError& error) {
    while (!_callbacks.empty()) {
        EndCallback const next = std::move(_callbacks.front());
        _callbacks.pop_front();
        RCShdPtr<CbHandler<CbEmptyType>> const callback = next.owned ? next.owned : next.handler.lock();
        if (callback) error.capture([&] { callback->call({}); });
    }
    endings.call({}, error);
    endExtensions(_extensions.size(), isLongTransition, error);
}

void GuardHooks::notifyTransaction(bool hasBegun, LgFirstError& error) {
    if (std::exchange(_isTransactionBegun, hasBegun) != hasBegun) transactions.call(hasBegun, error);
}

std::function<void()> GuardHooks::takeOutside() {
    std::function<void()> next = std::move(_outside.front());
    _outside.pop_front();
    return next;
}

void GuardHooks::endExtensions(std::size_t count, bool isLongTransition, LgFirstError& error) {
    while (count-- > 0) {
        RCShdPtr<CmUndoGuardExtension> const extension = _extensions[count];
        error.capture([&] { extension->endOutermostGuard(isLongTransition); });
    }
}

} // namespace Ko
