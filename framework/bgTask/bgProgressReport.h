#pragma once

#include "framework/frameworkApi.h"

namespace Ko {

/// Is told how far some work has come.
class KO_FRAMEWORK_API BgProgressReport {
public:
    virtual ~BgProgressReport();
    /// Called on the thread that works.
    virtual void reportProgress(int done, int total) = 0;
};

} // namespace Ko
