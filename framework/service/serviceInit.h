#pragma once

#include "base/inInit.h"
#include "framework/frameworkApi.h"

namespace KoInit {

/// The tag of the package "service".
struct service {};

} // namespace KoInit

template <>
KO_FRAMEWORK_API Ko::InPackageInit::Type Ko::InInit<KoInit::service>::getType();
