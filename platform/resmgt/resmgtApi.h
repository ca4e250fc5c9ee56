#pragma once

#include "base/export.h"

/// Marks the classes and functions that libKOresmgt exports.
#if defined(KO_BUILDING_RESMGT)
#define KO_RESMGT_API KO_EXPORT
#else
#define KO_RESMGT_API KO_IMPORT
#endif
