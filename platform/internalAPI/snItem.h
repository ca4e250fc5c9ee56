#pragma once

#include "internalAPI/snParts.h"

namespace Ko {

/// Something that can be selected, dragged and acted upon: a layer, a node, a file, a text; or parts of it.
///
/// An item is a small value that names or holds the thing, shared as `RCShdPtr<SnItem const>`. What its equality and hash
/// depend on never changes. Most kinds of items are an `SnItemBasic` of some value.
class KO_INTERNALAPI_API SnItem : public RCBase {
public:
    ~SnItem() override;

    /// @returns an item with the same value and parts that has no owner yet; the caller becomes it.
    virtual SnItem* clone() const = 0;
    /// Whether the other one is of the same kind and has an equal value.
    virtual bool isEqualIgnoreParts(SnItem const& other) const = 0;
    /// Writes the type and the parts, a line each; a derived class adds its value.
    virtual void dump(std::ostream& stream) const;
    /// The same for items that are equal ignoring parts.
    virtual std::size_t getHashIgnoreParts() const = 0;

    /// Whether value and parts are equal. No parts, as a null pointer or an empty set, are the whole item.
    bool isEqual(SnItem const& other) const;
    /// The same for items that are equal.
    std::size_t getHash() const;
    /// Null for the whole item.
    RCShdPtr<SnParts> const& getParts() const noexcept { return _parts; }

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
