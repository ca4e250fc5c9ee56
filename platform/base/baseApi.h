#pragma once

#include "base/export.h"

/// Marks the classes and functions that libKObase exports.
#if defined(KO_BUILDING_BASE)
#define KO_BASE_API KO_EXPORT
#else
#define KO_BASE_API KO_IMPORT
#endif
