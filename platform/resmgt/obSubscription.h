#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/lkCondVar.h"
#include "resmgt/obHints.h"

#include <functional>
#include <utility>

namespace Ko {

/// Where the callable of a subscription is called.
enum class ObDelivery {
    /// On the notifying thread, by several threads at once if several notify.
    Here,
    /// On the application thread, by an event: one per notification, in the order of the notifications.
    ApplicationThread
};

/// The shared end of a subscription to a subject.
class KO_RESMGT_API ObConnection : public RCBase {
public:
    /// Implements `ObSubscription::end`.
    virtual void disconnect() noexcept = 0;

protected:
    ObConnection();
    ~ObConnection() override;
};

/// Keeps a callable subscribed to a subject for the length of a scope.
///
///     ObSubscription const shown = job->on<BgJobHintProgress>([&](auto const& step) { bar.set(step.getProgress()); });
///
/// After its end the callable is not called any more, also for events that wait already. The end waits for calls on other
/// threads, but not inside a call of the same callable. The callable is destroyed then, or after the last call has returned.
/// A subscription may end on any thread, and may outlive its subject. One object: one thread at a time.
class [[nodiscard]] ObSubscription {
public:
    /// A subscription that has ended.
    ObSubscription() noexcept = default;
    /// Takes over the connection.
    explicit ObSubscription(RCShdPtr<ObConnection> connection) noexcept : _connection(std::move(connection)) {}
    ~ObSubscription() { end(); }
    ObSubscription(ObSubscription&& other) noexcept : _connection(std::move(other._connection)) {}
    ObSubscription& operator=(ObSubscription&& other) noexcept {
        ObSubscription before(std::move(*this));
        _connection = std::move(other._connection);
        return *this;
    }
    ObSubscription(ObSubscription const&) = delete;
    ObSubscription& operator=(ObSubscription const&) = delete;

    /// Ends the subscription before its scope does. Without effect on one that has ended.
    void end() noexcept {
        // Releasing the callable may run arbitrary code, which must find this subscription ended.
        if (RCShdPtr<ObConnection> const connection = std::move(_connection)) connection->disconnect();
    }

private:
    RCShdPtr<ObConnection> _connection;
};

/// The callable of a subscription and its calls, for all tags.
class KO_RESMGT_API ObSubscriberBase : public ObConnection {
public:
    /// What a subscription calls.
    using Callable = std::function<void(ObHints const&)>;
    /// Whether the callable is called for these hints. Called on the notifying thread.
    using Filter = bool (*)(ObHints const& hints);

    /// Delivers a notification as the subscription asks for. Any thread.
    void receive(ObHints const& hints);
    /// Posts an event that calls the callable. Any thread.
    void post(ObHints const& hints);

protected:
    /// @param filter null for all hints. @throws ExNullPtr for an empty callable.
    ObSubscriberBase(Callable callable, ObDelivery delivery, Filter filter);
    ~ObSubscriberBase() override;
    /// Refuses further calls, and waits for those on other threads unless this thread is inside one.
    void endCalls() noexcept;

private:
    class Call;

    Callable _callable;
    ObDelivery const _delivery;
    Filter const _filter;
    // Guards what follows, and the replacement of the callable. Not held during a call.
    LkLock _lock{"ObSubscriber"};
    LkCondVar _isIdle{"End of calls"};
    int _running = 0;
    bool _hasEnded = false;
};

} // namespace Ko
