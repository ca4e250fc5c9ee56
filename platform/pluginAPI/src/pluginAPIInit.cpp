#include "pluginAPI/pluginAPIInit.h"

#include "base/baseInit.h"
#include "internalAPI/internalAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class PluginAPIInit final : public InInit<KoInit::pluginAPI> {
public:
    PluginAPIInit()
        : InInit("pluginAPI", packagesOf<KoInit::internalAPI, KoInit::primitives, KoInit::resmgt, KoInit::base>()) {}
};

PluginAPIInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::pluginAPI>::getType() {
    return typeid(KoInit::pluginAPI);
}

} // namespace Ko
