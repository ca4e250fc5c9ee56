#include "internalAPI/internalAPIInit.h"

#include "base/baseInit.h"
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

template <>
InPackageInit::Type InInit<KoInit::internalAPI>::getType() {
    return typeid(KoInit::internalAPI);
}

} // namespace Ko
