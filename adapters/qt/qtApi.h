#pragma once

#include "base/export.h"

/// Marks what libKOqt exports.
#if defined(KO_BUILDING_QT)
#define KO_QT_API KO_EXPORT
#else
#define KO_QT_API KO_IMPORT
#endif
