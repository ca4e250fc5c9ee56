#pragma once

#include "base/oPtr.h"
#include "resmgt/lgGroups.h"

namespace Ko {

/// The log group "BgTask", which exists while the package is initialised.
class BgLog {
public:
    static void initialize();
    static void finalize();

    /// Null outside the package's lifetime.
    static LgMinorGroup const* getGroup() noexcept { return _group.get(); }

private:
    static OPtr<LgMinorGroup> _group;
};

} // namespace Ko
