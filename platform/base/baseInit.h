#pragma once

#include "base/baseApi.h"
#include "base/inInit.h"

namespace KoInit {

/// The tag of the package of libKObase.
struct base {};

} // namespace KoInit

template <>
KO_BASE_API Ko::InPackageInit::Type Ko::InInit<KoInit::base>::getType();
