#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/internalAPIApi.h"

#include <utility>

namespace Ko {

/// The shared end of a subscription; for implementers of subjects.
class KO_INTERNALAPI_API CbConnection : public RCBase {
public:
    /// Ends the calls. Does nothing once the subject is gone, or when called again.
    virtual void disconnect() noexcept = 0;

protected:
    CbConnection();
    ~CbConnection() override;
};

/// Keeps a callable registered with a subject for the length of a scope.
///
///     CbSubscription const subscription = stack.onCommandProcessed([&] { view.redraw(); });
///
/// The callable is not called any more once the subscription has ended, and is destroyed then; one that ends its own subscription
/// is destroyed after it has returned. A subscription may outlive its subject. Same thread as the subject.
class [[nodiscard]] CbSubscription {
public:
    /// A subscription that has ended.
    CbSubscription() noexcept = default;
    /// Takes over the connection.
    explicit CbSubscription(RCShdPtr<CbConnection> connection) noexcept : _connection(std::move(connection)) {}
    ~CbSubscription() { end(); }
    CbSubscription(CbSubscription&& other) noexcept : _connection(std::move(other._connection)) {}
    CbSubscription& operator=(CbSubscription&& other) noexcept {
        CbSubscription before(std::move(*this));
        _connection = std::move(other._connection);
        return *this;
    }
    CbSubscription(CbSubscription const&) = delete;
    CbSubscription& operator=(CbSubscription const&) = delete;

    /// Ends the subscription before its scope does. Does nothing on one that has ended.
    void end() noexcept {
        // Releasing the callable may run arbitrary code, which must find this subscription ended.
        if (RCShdPtr<CbConnection> const connection = std::move(_connection)) connection->disconnect();
    }

private:
    RCShdPtr<CbConnection> _connection;
};

} // namespace Ko
