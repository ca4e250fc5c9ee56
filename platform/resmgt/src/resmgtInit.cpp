#include "resmgt/resmgtInit.h"

#include "base/baseInit.h"
#include "base/inInit.h"

namespace Ko {

namespace {

class ResmgtInit final : public InInit<KoInit::resmgt> {
public:
    ResmgtInit() : InInit("resmgt", packagesOf<KoInit::base>()) {}
};

ResmgtInit package;

} // namespace

} // namespace Ko
