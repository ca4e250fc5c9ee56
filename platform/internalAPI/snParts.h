#pragma once

#include "base/rcShdPtr.h"
#include "internalAPI/internalAPIApi.h"
#include "resmgt/liString.h"

#include <cstddef>
#include <iosfwd>

namespace Ko {

/// The parts of an item that are meant, by name, where it is not the whole item: a channel, a mask, points of a curve.
/// Never changes.
class KO_INTERNALAPI_API SnParts : public RCBase {
public:
    /// @param names none for the whole item.
    static RCShdPtr<SnParts> create(Set<LiString> names);

    /// Parts are equal when their names are:
    Set<LiString> const& getNames() const noexcept { return _names; }
    bool isEqual(SnParts const& other) const { return _names == other._names; }
    std::size_t getHash() const noexcept { return _hash; }
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
