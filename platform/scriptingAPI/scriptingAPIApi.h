#pragma once

#include "base/export.h"

/// Marks what libKOscriptingAPI exports.
#if defined(KO_BUILDING_SCRIPTINGAPI)
#define KO_SCRIPTINGAPI_API KO_EXPORT
#else
#define KO_SCRIPTINGAPI_API KO_IMPORT
#endif
