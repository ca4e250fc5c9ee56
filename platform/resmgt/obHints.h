#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <array>
#include <cstddef>
#include <typeinfo>

namespace Ko {

/// One thing that a subject tells its observers. It does not change any more once it was sent, and observers on several
/// threads may read it.
class KO_RESMGT_API ObHint : public RCBase {
public:
    ~ObHint() override;

protected:
    ObHint() = default;
};

/// What a notification says: hints of several classes, in the order in which they were added.
class KO_RESMGT_API ObHints {
public:
    ObHints() = default;
    /// Begins with a hint. @throws ExNullPtr for a null pointer.
    explicit ObHints(RCShdPtr<ObHint> hint) { add(std::move(hint)); }
    ObHints(ObHints const&) = delete;
    ObHints& operator=(ObHints const&) = delete;

    /// @throws ExNullPtr for a null pointer.
    void add(RCShdPtr<ObHint> hint);
    /// The hints in their order; an index is less than their number:
    std::size_t size() const noexcept { return _size; }
    RCShdPtr<ObHint> const& operator[](std::size_t index) const noexcept {
        return index < _first.size() ? _first[index] : _others[index - _first.size()];
    }

    /// The first hint of exactly the class `Hint`; null if there is none.
    template <class Hint>
    RCShdPtr<Hint> pickHint() const noexcept {
        return RCShdPtr<Hint>(static_cast<Hint*>(pickHint(typeid(Hint)).get()));
    }
    RCShdPtr<ObHint> pickHint(std::type_info const& type) const noexcept;

private:
    // Nearly every notification has one or two hints, which take no memory of their own.
    std::array<RCShdPtr<ObHint>, 2> _first;
    Vector<RCShdPtr<ObHint>> _others;
    std::size_t _size = 0;
};

} // namespace Ko
