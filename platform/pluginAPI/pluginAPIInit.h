#pragma once

#include "base/inInit.h"
#include "pluginAPI/pluginAPIApi.h"

namespace KoInit {

/// The package of libKOpluginAPI.
struct pluginAPI {};

} // namespace KoInit

template <>
KO_PLUGINAPI_API Ko::InPackageInit::Type Ko::InInit<KoInit::pluginAPI>::getType();
