#pragma once

#include "base/inInit.h"
#include "framework/frameworkApi.h"

namespace KoInit {

/// The package "bgTask".
struct bgTask {};

} // namespace KoInit

template <>
KO_FRAMEWORK_API Ko::InPackageInit::Type Ko::InInit<KoInit::bgTask>::getType();
