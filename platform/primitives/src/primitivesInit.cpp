#include "primitives/primitivesInit.h"

#include "base/baseInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class PrimitivesInit final : public InInit<KoInit::primitives> {
public:
    PrimitivesInit() : InInit("primitives", packagesOf<KoInit::resmgt, KoInit::base>()) {}
};

PrimitivesInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::primitives>::getType() {
    return typeid(KoInit::primitives);
}

} // namespace Ko
