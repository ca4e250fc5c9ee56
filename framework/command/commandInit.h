#pragma once

#include "base/inInit.h"
#include "framework/frameworkApi.h"

namespace KoInit {

/// Identifies the package "command".
struct command {};

} // namespace KoInit

template <>
KO_FRAMEWORK_API Ko::InPackageInit::Type Ko::InInit<KoInit::command>::getType();
