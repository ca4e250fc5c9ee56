#include "framework/service/serviceInit.h"

#include "base/baseInit.h"

namespace Ko {

namespace {

class ServiceInit final : public InInit<KoInit::service> {
public:
    ServiceInit() : InInit("service", packagesOf<KoInit::base>()) {}
};

ServiceInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::service>::getType() {
    return typeid(KoInit::service);
}

} // namespace Ko
