#pragma once

#include "internalAPI/snItem.h"

#include <functional>
#include <ostream>

namespace Ko {

/// How an item compares, hashes and shows its value. For a type without `==`, `std::hash` and `<<`, specialise it.
template <class T>
class SnItemValue {
public:
    /// Whether the values are equal.
    [[nodiscard]] static bool isEqual(T const& a, T const& b) { return a == b; }
    /// The hash of a value: the same for equal values.
    [[nodiscard]] static std::size_t getHash(T const& value) { return std::hash<T>()(value); }
    /// Writes a value, for diagnosis.
    static void dump(std::ostream& stream, T const& value) { stream << value; }
};

/// Shared objects are compared by identity.
template <class T>
class SnItemValue<RCShdPtr<T>> {
public:
    /// Whether both point to the same object.
    [[nodiscard]] static bool isEqual(RCShdPtr<T> const& a, RCShdPtr<T> const& b) noexcept { return a == b; }
    /// The hash of the address.
    [[nodiscard]] static std::size_t getHash(RCShdPtr<T> const& value) noexcept {
        return std::hash<RCShdPtr<T>>()(value);
    }
    /// Writes the object.
    static void dump(std::ostream& stream, RCShdPtr<T> const& value) { value.dump(stream); }
};

/// An item that carries a value. Items of one `T` that carry equal values are equal.
///
/// To carry a type of your own, say `KO_ITEM_TYPE(Frame)` in one source (`snItemType.imp.h`). Without conversion, declare the
/// instantiation beside the type, and make it in one source that includes `snItemBasic.imp.h`:
///
///     extern template class Ko::SnItemBasic<Frame>; // header; with an export mark where plug-ins use it
///     template class Ko::SnItemBasic<Frame>;        // source
template <class T>
class SnItemBasic : public SnItem {
public:
    /// A new item that stands for the whole.
    [[nodiscard]] static RCShdPtr<SnItemBasic> create(T const& value);
    /// A new item that stands for parts; null for the whole.
    [[nodiscard]] static RCShdPtr<SnItemBasic> create(T const& value, RCShdPtr<SnParts> const& parts);

    /// As `create`.
    SnItemBasic(T const& value, RCShdPtr<SnParts> const& parts);
    SnItemBasic(SnItemBasic const& other);
    SnItemBasic& operator=(SnItemBasic const&) = delete;
    ~SnItemBasic() override;

    SnItem* clone() const override;
    [[nodiscard]] bool isEqualIgnoreParts(SnItem const& other) const override;
    void dump(std::ostream& stream) const override;
    [[nodiscard]] std::size_t getHashIgnoreParts() const override;

    /// The value, which never changes.
    [[nodiscard]] T const& get() const noexcept { return _value; }

private:
    T _value;
};

extern template class KO_INTERNALAPI_API SnItemBasic<LiString>;

} // namespace Ko
