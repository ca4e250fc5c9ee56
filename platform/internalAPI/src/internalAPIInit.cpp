#include "internalAPI/internalAPIInit.h"

#include "base/baseInit.h"
#include "base/inInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class InternalAPIInit final : public InInit<KoInit::internalAPI> {
public:
    InternalAPIInit() : InInit("internalAPI", packagesOf<KoInit::primitives, KoInit::resmgt, KoInit::base>()) {}
};

InternalAPIInit package;

} // namespace

} // namespace Ko
