#include "scriptingAPI/scriptingAPIInit.h"

#include "base/baseInit.h"
#include "internalAPI/internalAPIInit.h"
#include "pluginAPI/pluginAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class ScriptingAPIInit final : public InInit<KoInit::scriptingAPI> {
public:
    ScriptingAPIInit()
        : InInit("scriptingAPI",
              packagesOf<KoInit::pluginAPI, KoInit::internalAPI, KoInit::primitives, KoInit::resmgt, KoInit::base>()) {}
};

ScriptingAPIInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::scriptingAPI>::getType() {
    return typeid(KoInit::scriptingAPI);
}

} // namespace Ko
