#pragma once

#include "framework/plugInMgr/pimDeclaration.h"

namespace Ko {

/// What plug-ins may be built against in this process.
class PimInterfaces {
public:
    /// Offers an interface, or replaces the one of that name.
    /// @throws ExAssertionFailed when the text is not of the form of `PimInterface::parse`.
    static void set(std::string_view text);
    /// Why a plug-in does not run here; empty where it does.
    [[nodiscard]] static LiString getProblem(PimDeclaration const& declaration);
};

} // namespace Ko
