#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <cstddef>
#include <iosfwd>

namespace Ko {

/// The names of the parts that an item stands for if it is not the whole object: a channel, a mask, points of a curve.
/// Immutable.
class KO_INTERNALAPI_API SnParts : public RCBase {
public:
    /// New parts.
    /// @param names empty for the whole item.
    [[nodiscard]] static RCShdPtr<SnParts> create(Set<LiString> names);

    /// The names of the parts.
    [[nodiscard]] Set<LiString> const& getNames() const noexcept { return _names; }
    /// Whether the names are equal.
    [[nodiscard]] bool isEqual(SnParts const& other) const { return _names == other._names; }
    /// The hash of the names: the same for equal parts.
    [[nodiscard]] std::size_t getHash() const noexcept { return _hash; }
    /// Writes the names, with ", " between them.
    void dump(std::ostream& stream) const;

protected:
    /// As `create`.
    explicit SnParts(Set<LiString> names);
    ~SnParts() override;

private:
    friend class RCShdPtr<SnParts>;

    Set<LiString> _names;
    std::size_t _hash;
};

/// For `RCShdPtr<SnParts>::dump`.
KO_INTERNALAPI_API void dumpObject(std::ostream& stream, SnParts const& parts);

} // namespace Ko
