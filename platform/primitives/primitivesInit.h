#pragma once

#include "base/inInit.h"
#include "primitives/primitivesApi.h"

namespace KoInit {

/// The package of libKOprimitives.
struct primitives {};

} // namespace KoInit

template <>
KO_PRIMITIVES_API Ko::InPackageInit::Type Ko::InInit<KoInit::primitives>::getType();
