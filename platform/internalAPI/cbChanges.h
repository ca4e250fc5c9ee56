#pragma once

#include "internalAPI/cbDispatcher.h"

#include <cstdint>
#include <functional>
#include <list>

namespace Ko {

/// Delivers the changes of a subject to callables, in the order in which they were made, also where a callable changes the subject
/// again: such a change is delivered after the present one has reached all of them. What a callable throws is logged. One thread.
template <class Change>
class CbChanges {
public:
    /// One change, allocated before the operation, so that its delivery needs no memory.
    using Prepared = std::list<Change>;

    /// @param context of what callables throw, for the log: "A listener of ..."; is not copied.
    /// @param unknown is delivered in place of changes that could not be prepared for lack of memory.
    explicit CbChanges(char const* context, Change unknown = {});

    /// Calls `callable` with each change that is made from now on, until the result ends; not empty.
    [[nodiscard]] CbSubscription subscribe(std::function<void(Change const&)> callable);
    /// Whether there are no subscriptions.
    [[nodiscard]] bool isEmpty() const noexcept { return _dispatcher.isEmpty(); }

    /// Delivers the change, or leaves it to the call that delivers others now. To be called after the operation. The subject has to
    /// outlive the call.
    void notify(Prepared& change) noexcept;
    /// The same for a change that could not be prepared. It takes the place of all that are not delivered yet.
    void notifyUnknown() noexcept;

private:
    void deliverAll() noexcept;
    void deliver(Change const& change, std::uint64_t number) noexcept;

    char const* _context;
    Change const _unknown;
    CbDispatcher<Change> _dispatcher;
    Prepared _waiting;
    bool _isUnknown = false;
    bool _isDelivering = false;
    // Changes are numbered, so that a new subscriber gets none of those that wait.
    std::uint64_t _numMade = 0;
    std::uint64_t _delivered = 0;
};

} // namespace Ko
