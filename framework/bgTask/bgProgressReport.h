#pragma once

#include "framework/frameworkApi.h"

namespace Ko {

/// Receives reports of the progress of some work.
class KO_FRAMEWORK_API BgProgressReport {
public:
    virtual ~BgProgressReport();
    /// Called on the working thread. (0, 0) means unknown.
    virtual void reportProgress(int done, int total) = 0;
};

} // namespace Ko
