#pragma once

#include "base/inInit.h"
#include "framework/frameworkApi.h"

namespace KoInit {

/// The tag of the package "framework", which depends on all packages of this library.
struct framework {};

} // namespace KoInit

template <>
KO_FRAMEWORK_API Ko::InPackageInit::Type Ko::InInit<KoInit::framework>::getType();
