#pragma once

#include "base/export.h"

/// Marks what libKOprimitives exports.
#if defined(KO_BUILDING_PRIMITIVES)
#define KO_PRIMITIVES_API KO_EXPORT
#else
#define KO_PRIMITIVES_API KO_IMPORT
#endif
