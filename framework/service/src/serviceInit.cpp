#include "framework/service/serviceInit.h"

#include "base/baseInit.h"
#include "base/inInit.h"

namespace Ko {

namespace {

class ServiceInit final : public InInit<KoInit::service> {
public:
    ServiceInit() : InInit("service", packagesOf<KoInit::base>()) {}
};

ServiceInit package;

} // namespace

} // namespace Ko
