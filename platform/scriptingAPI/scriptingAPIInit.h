#pragma once

#include "base/inInit.h"
#include "scriptingAPI/scriptingAPIApi.h"

namespace KoInit {

/// The package of libKOscriptingAPI.
struct scriptingAPI {};

} // namespace KoInit

template <>
KO_SCRIPTINGAPI_API Ko::InPackageInit::Type Ko::InInit<KoInit::scriptingAPI>::getType();
