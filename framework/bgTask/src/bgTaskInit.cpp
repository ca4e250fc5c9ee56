#include "framework/bgTask/bgTaskInit.h"

#include "base/baseInit.h"
#include "internalAPI/internalAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class BgTaskInit final : public InInit<KoInit::bgTask> {
public:
    BgTaskInit()
        : InInit("bgTask", packagesOf<KoInit::internalAPI, KoInit::primitives, KoInit::resmgt, KoInit::base>()) {}
};

BgTaskInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::bgTask>::getType() {
    return typeid(KoInit::bgTask);
}

} // namespace Ko
