#pragma once

#include "base/inInit.h"
#include "internalAPI/internalAPIApi.h"

namespace KoInit {

/// The package of libKOinternalAPI.
struct internalAPI {};

} // namespace KoInit

template <>
KO_INTERNALAPI_API Ko::InPackageInit::Type Ko::InInit<KoInit::internalAPI>::getType();
