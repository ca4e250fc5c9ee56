#pragma once

#include "resmgt/lgPackageGroup.h"

namespace Ko {

/// The log group "BgTask".
class BgLog {
public:
    static inline constinit LgPackageGroup group{"BgTask"};
};

} // namespace Ko
