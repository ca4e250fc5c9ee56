#pragma once

#include "internalAPI/snParts.h"

namespace Ko {

/// An object that can be selected, dragged and acted upon: a layer, a node, a file, a text; or parts of it.
///
/// An item is a small value that names or holds the object, shared as `RCShdPtr<SnItem const>`. Its equality and its hash
/// never change, and comparing or hashing items has no effect. Most kinds of items are an `SnItemBasic` of some value.
class KO_INTERNALAPI_API SnItem : public RCBase {
public:
    ~SnItem() override;

    /// A new item with the same value and parts. The caller becomes its owner.
    [[nodiscard]] virtual SnItem* clone() const = 0;
    /// Whether the other item is of the same kind and has an equal value.
    [[nodiscard]] virtual bool isEqualIgnoreParts(SnItem const& other) const = 0;
    /// Writes the type and the parts, a line each; a derived class adds its value.
    virtual void dump(std::ostream& stream) const;
    /// The hash of kind and value: the same for items that are equal ignoring parts.
    [[nodiscard]] virtual std::size_t getHashIgnoreParts() const = 0;

    /// Whether kind, value and parts are equal. A null pointer and an empty set of parts both stand for the whole item.
    [[nodiscard]] bool isEqual(SnItem const& other) const;
    /// The hash of kind, value and parts: the same for equal items.
    [[nodiscard]] std::size_t getHash() const;
    /// The parts; null for the whole item.
    [[nodiscard]] RCShdPtr<SnParts> const& getParts() const noexcept { return _parts; }

protected:
    /// @param parts null for the whole item.
    explicit SnItem(RCShdPtr<SnParts> const& parts = nullptr) noexcept : _parts(parts) {}
    SnItem(SnItem const&) = default;
    SnItem& operator=(SnItem const&) = default;

private:
    RCShdPtr<SnParts> _parts;
};

/// For `RCShdPtr<SnItem>::dump`.
KO_INTERNALAPI_API void dumpObject(std::ostream& stream, SnItem const& item);

} // namespace Ko
