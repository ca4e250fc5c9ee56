#pragma once

#include "base/inInit.h"
#include "resmgt/resmgtApi.h"

namespace KoInit {

/// The package of libKOresmgt.
struct resmgt {};

} // namespace KoInit

template <>
KO_RESMGT_API Ko::InPackageInit::Type Ko::InInit<KoInit::resmgt>::getType();
