// A plug-in that uses the library without a host.
#include "framework/frameworkLib/pimActions.h"

namespace {

Ko::PimActions<struct Empty> package("empty", {});

} // namespace
