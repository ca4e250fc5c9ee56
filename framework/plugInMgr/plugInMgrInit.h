#pragma once

#include "base/inInit.h"
#include "framework/frameworkApi.h"

namespace KoInit {

/// The tag of the package "plugInMgr".
struct plugInMgr {};

} // namespace KoInit

template <>
KO_FRAMEWORK_API Ko::InPackageInit::Type Ko::InInit<KoInit::plugInMgr>::getType();
