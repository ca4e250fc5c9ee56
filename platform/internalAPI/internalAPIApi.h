#pragma once

#include "base/export.h"

/// Marks what libKOinternalAPI exports.
#if defined(KO_BUILDING_INTERNALAPI)
#define KO_INTERNALAPI_API KO_EXPORT
#else
#define KO_INTERNALAPI_API KO_IMPORT
#endif
