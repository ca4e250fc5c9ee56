#include "resmgt/resmgtInit.h"

#include "base/baseInit.h"

namespace Ko {

namespace {

class ResmgtInit final : public InInit<KoInit::resmgt> {
public:
    ResmgtInit() : InInit("resmgt", packagesOf<KoInit::base>()) {}
};

ResmgtInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::resmgt>::getType() {
    return typeid(KoInit::resmgt);
}

} // namespace Ko
