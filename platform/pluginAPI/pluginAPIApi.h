#pragma once

#include "base/export.h"

/// Marks what libKOpluginAPI exports.
#if defined(KO_BUILDING_PLUGINAPI)
#define KO_PLUGINAPI_API KO_EXPORT
#else
#define KO_PLUGINAPI_API KO_IMPORT
#endif
