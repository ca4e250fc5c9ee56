#pragma once

#include "framework/plugInMgr/pimDeclaration.h"

namespace Ko {

/// The plug-ins to load for one, those that are required before those that require them. Reads files only; none of their code runs.
class PimOrder {
public:
    /// @param path exists, and is not loaded yet.
    /// @throws PimEx::ExRefused and OsSharedLibEx when the plug-in cannot be loaded: for its own declaration, or because a required
    ///   one is missing, refused or failed, or because plug-ins require one another in a circle.
    explicit PimOrder(OsFilePath const& path);

    /// The required plug-ins that are not loaded yet.
    [[nodiscard]] Vector<OsFilePath> const& getRequired() const noexcept { return _required; }

    /// The reason to refuse a plug-in that requires one of this file name: that was tried, and failed. Else empty.
    [[nodiscard]] static LiString getFailure(OsFilePath const& fileName);

private:
    void check(OsFilePath const& path);
    void require(LiString const& name, OsFilePath const& directory);

    // From the plug-in to the required one that is being checked.
    Vector<OsFilePath> _chain;
    Vector<OsFilePath> _required;
    Set<OsFilePath> _names;
};

} // namespace Ko
