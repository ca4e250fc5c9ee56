#pragma once

#include "base/oPtr.h"
#include "resmgt/lgGroups.h"

namespace Ko {

/// The log group "PlugInMgr", which exists while the package is initialised.
class PimLog {
public:
    static constexpr int failure = 2;
    /// Why a file is not loaded although nothing failed.
    static constexpr int selection = 5;

    /// @throws ExAssertionFailed when the group exists.
    static void initialize();
    /// @throws ExAssertionFailed when it does not.
    static void finalize();

    /// Writes "[PlugInMgr] " and the text that `makeText()` returns.
    template <class MakeText>
    static void write(int level, MakeText makeText) {
        if (_group) _group->log(level, [&] { return "[" + _group->getName() + "] " + makeText(); });
    }

private:
    static OPtr<LgMinorGroup> _group;
};

} // namespace Ko
