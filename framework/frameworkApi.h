#pragma once

#include "base/export.h"

/// Marks what libKOframework exports.
#if defined(KO_BUILDING_FRAMEWORK)
#define KO_FRAMEWORK_API KO_EXPORT
#else
#define KO_FRAMEWORK_API KO_IMPORT
#endif
