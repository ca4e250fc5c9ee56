#pragma once

#include "base/rcWeakPtr.h"
#include "framework/command/cmUndoGuardExtension.h"
#include "internalAPI/cbDispatcher.h"
#include "resmgt/lgFirstError.h"

#include <deque>
#include <functional>

namespace Ko {

/// The user code that is called when an outermost guard opens and closes: extensions, and callbacks for one closing.
class GuardHooks {
public:
    /// Whether there is nothing to call.
    bool isEmpty() const noexcept {
        return _extensions.empty() && _callbacks.empty() && _outside.empty() && transactions.isEmpty() &&
               endings.isEmpty();
    }

    /// Listeners of the begin and the end of transactions: whether one has begun.
    CbDispatcher<bool> transactions;
    /// Listeners of every closing of an outermost guard.
    CbDispatcher<CbEmptyType> endings;

    /// Extensions are never removed.
    void addExtension(RCShdPtr<CmUndoGuardExtension> extension) { _extensions.push_back(std::move(extension)); }
    /// Calls `callback` at the next closing if it still exists then.
    void addEndCallback(RCWeakPtr<CbHandler<CbEmptyType>> const& callback) {
        _callbacks.push_back({callback, nullptr});
    }
    /// Calls `callback` at the next closing, and shares its ownership until then.
    void addOwnedEndCallback(RCShdPtr<CbHandler<CbEmptyType>> const& callback) { _callbacks.push_back({{}, callback}); }

    /// Calls `action` after the present guards and transaction.
    void addOutside(std::function<void()> action) { _outside.push_back(std::move(action)); }
    /// Calls the listeners of transactions. An end is delivered only after its begin.
    void notifyTransaction(bool hasBegun, LgFirstError& error);
    /// Takes the next action that waits for the end of the transaction; there must be one.
    std::function<void()> takeOutside();
    /// Whether anything waits for the beginning or the end of a transaction.
    bool followTransactions() const noexcept { return !transactions.isEmpty() || getNumOutside() > 0; }
    /// How many actions wait.
    std::size_t getNumOutside() const noexcept { return _outside.size(); }

    /// Calls the begin hooks in the order of registration. If one throws, the end hooks of those before it are called.
    void begin(bool isLongTransition);
    /// Calls the callbacks, also those that are added meanwhile, then the end hooks in reverse order.
    void end(bool isLongTransition, LgFirstError& error);

private:
    struct EndCallback {
        RCWeakPtr<CbHandler<CbEmptyType>> handler;
        RCShdPtr<CbHandler<CbEmptyType>> owned;
    };

    void endExtensions(std::size_t count, bool isLongTransition, LgFirstError& error);

    Vector<RCShdPtr<CmUndoGuardExtension>> _extensions;
    std::deque<EndCallback> _callbacks;
    std::deque<std::function<void()>> _outside;
    bool _isTransactionBegun = false;
};

} // namespace Ko
