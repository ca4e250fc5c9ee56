#include "resmgt/obSubscription.h"

#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "resmgt/lgFirstError.h"

#include <typeinfo>

namespace Ko {

ObConnection::ObConnection() = default;
ObConnection::~ObConnection() = default;

/// One call of the callable, if that is still allowed.
class ObSubscriberBase::Call {
public:
    explicit Call(ObSubscriberBase& subscriber) noexcept
        : _subscriber(subscriber), _outer(std::exchange(innermost, this)) {
        std::lock_guard const guard(subscriber._lock);
        _isAllowed = !subscriber._hasEnded;
        if (_isAllowed) ++subscriber._running;
    }
    ~Call() {
        innermost = _outer;
        if (_isAllowed) leave();
    }
    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;

    bool isAllowed() const noexcept { return _isAllowed; }
    static bool isInside(ObSubscriberBase const& subscriber) noexcept {
        for (Call const* call = innermost; call; call = call->_outer)
            if (&call->_subscriber == &subscriber) return true;
        return false;
    }

private:
    void leave() noexcept {
        Callable unused; // destroyed after the unlock
        std::lock_guard const guard(_subscriber._lock);
        if (--_subscriber._running > 0 || !_subscriber._hasEnded) return;
        unused.swap(_subscriber._callable);
        _subscriber._isIdle.broadcast();
    }

    static thread_local Call const* innermost;

    ObSubscriberBase& _subscriber;
    Call const* const _outer;
    bool _isAllowed = false;
};

constinit thread_local ObSubscriberBase::Call const* ObSubscriberBase::Call::innermost = nullptr;

ObSubscriberBase::ObSubscriberBase(Callable callable, ObDelivery delivery, Filter filter)
    : _callable(std::move(callable)), _delivery(delivery), _filter(filter) {
    if (!_callable) RCExUtil::throwExNullPtr(typeid(Callable).name());
}
ObSubscriberBase::~ObSubscriberBase() = default;

void ObSubscriberBase::receive(ObHints const& hints) {
    if (_filter && !_filter(hints)) return;
    bool const isOnItsThread = hints.isDeferred() && InInitMgr::isApplicationThread();
    if (_delivery == ObDelivery::ApplicationThread && !isOnItsThread) return post(hints);
    if (Call const call(*this); call.isAllowed()) _callable(hints);
}

void ObSubscriberBase::post(ObHints const& hints) {
    if (!EvEventManager::isInitialized()) return;
    EvEventManager::getInstance().postRequest([self = RCShdPtr<ObSubscriberBase>(this), copy = hints.copy()] {
        LgFirstError error("A subscriber");
        if (Call const call(*self); call.isAllowed()) error.capture([&] { self->_callable(*copy); });
        error.log();
    });
}

void ObSubscriberBase::endCalls() noexcept {
    Callable unused; // destroyed after the unlock
    std::unique_lock lock(_lock);
    _hasEnded = true;
    if (!Call::isInside(*this)) _isIdle.wait(lock, [this] { return _running == 0; });
    if (_running == 0) unused.swap(_callable);
}

} // namespace Ko
