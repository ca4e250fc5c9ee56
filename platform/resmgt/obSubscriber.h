#pragma once

#include "resmgt/obObserver.h"
#include "resmgt/obSubscription.h"

namespace Ko {

/// Attaches the callable of a subscription to a subject of the tag `Tag`. Owned by the subscription, by its attachment, and
/// by the events that call it.
template <class Tag>
class ObSubscriber final : public ObSubscriberBase, public ObObserver<Tag> {
public:
    /// As the base class.
    ObSubscriber(Callable callable, ObDelivery delivery, Filter filter)
        : ObSubscriberBase(std::move(callable), delivery, filter) {}

    void disconnect() noexcept override {
        endCalls();
        ObChangeManager<Tag>::release(*this);
    }

private:
    void update(ObObserver<Tag> const*, ObHints const& hints) override { receive(hints); }
};

} // namespace Ko
