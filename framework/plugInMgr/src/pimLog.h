#pragma once

#include "resmgt/lgPackageGroup.h"

namespace Ko {

/// The log group "PlugInMgr" and its levels.
class PimLog {
public:
    /// The level of lines about plug-ins that failed.
    static constexpr int failure = 2;
    /// The level of lines about files that are not loaded for another reason than a failure.
    static constexpr int selection = 5;

    static inline constinit LgPackageGroup group{"PlugInMgr"};

    /// Writes "[PlugInMgr] " and the text that `makeText()` returns.
    template <class MakeText>
    static void write(int level, MakeText const& makeText) {
        group.log(level, [&] { return "[PlugInMgr] " + makeText(); });
    }
};

} // namespace Ko
