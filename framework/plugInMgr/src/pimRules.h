#pragma once

#include "resmgt/osFilePath.h"

namespace Ko {

/// The inclusion and exclusion rules of the settings. Written once, at the start; then read on any thread.
class PimRules {
public:
    /// Reads the settings.
    static void initialize();

    [[nodiscard]] static bool isFilteredOut(OsFilePath const& path);
    /// The type in the name of a plug-in's file; empty where there is none.
    [[nodiscard]] static LiString getType(OsFilePath const& path);
};

} // namespace Ko
