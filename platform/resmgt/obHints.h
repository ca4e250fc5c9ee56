#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <array>
#include <cstddef>
#include <memory>
#include <typeinfo>

namespace Ko {

/// One item of information in a notification. It never changes after it was sent: observers on several threads read it.
class KO_RESMGT_API ObHint : public RCBase {
public:
    ~ObHint() override;

protected:
    ObHint() = default;
};

/// The content of a notification: hints of several classes, in the order in which they were added.
class KO_RESMGT_API ObHints {
public:
    /// No hints.
    ObHints() = default;
    /// One hint. @throws ExNullPtr for a null pointer.
    explicit ObHints(RCShdPtr<ObHint> hint) : _size(1) {
        if (hint.isNull()) RCExUtil::throwExNullPtr(typeid(ObHint).name());
        _first[0].swap(hint);
    }
    ObHints(ObHints const&) = delete;
    ObHints& operator=(ObHints const&) = delete;

    /// Appends a hint. @throws ExNullPtr for a null pointer.
    void add(RCShdPtr<ObHint> hint);
    /// Says that an event on the application thread sends these hints: subscriptions that are delivered there are called at
    /// once, without an event of their own.
    void setDeferred() noexcept { _isDeferred = true; }
    /// Whether an event on the application thread sends these hints.
    [[nodiscard]] bool isDeferred() const noexcept { return _isDeferred; }
    /// The same hints, for a later time.
    [[nodiscard]] std::unique_ptr<ObHints> copy() const;
    /// The number of hints.
    [[nodiscard]] std::size_t size() const noexcept { return _size; }
    /// The hint at an index, which is less than the number of hints.
    RCShdPtr<ObHint> const& operator[](std::size_t index) const noexcept {
        return index < _first.size() ? _first[index] : _others[index - _first.size()];
    }

    /// The first hint of exactly the class `Hint`; null if there is none.
    template <class Hint>
    [[nodiscard]] RCShdPtr<Hint> pickHint() const noexcept {
        return RCShdPtr<Hint>(static_cast<Hint*>(find(typeid(Hint))));
    }
    /// The first hint of exactly the class with this type record; null if there is none.
    [[nodiscard]] RCShdPtr<ObHint> pickHint(std::type_info const& type) const noexcept {
        return RCShdPtr<ObHint>(find(type));
    }
    /// The same hint as `pickHint` without becoming its owner, which is faster: valid during the notification.
    template <class Hint>
    [[nodiscard]] Hint const* findHint() const noexcept {
        return static_cast<Hint const*>(find(typeid(Hint)));
    }

private:
    ObHint* find(std::type_info const& type) const noexcept {
        for (std::size_t index = 0; index < _size; ++index) {
            ObHint& hint = *(*this)[index].get();
            if (typeid(hint) == type) return &hint;
        }
        return nullptr;
    }

    // Nearly all notifications have one or two hints, which are stored without an allocation.
    std::array<RCShdPtr<ObHint>, 2> _first;
    Vector<RCShdPtr<ObHint>> _others;
    std::size_t _size = 0;
    bool _isDeferred = false;
};

} // namespace Ko
