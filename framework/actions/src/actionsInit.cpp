#include "framework/actions/actionsInit.h"

#include "base/baseInit.h"
#include "framework/command/commandInit.h"
#include "framework/dragAndDrop/dragAndDropInit.h"
#include "internalAPI/internalAPIInit.h"
#include "pluginAPI/pluginAPIInit.h"
#include "resmgt/resmgtInit.h"
#include "scriptingAPI/scriptingAPIInit.h"

namespace Ko {

namespace {

class ActionsInit final : public InInit<KoInit::actions> {
public:
    ActionsInit()
        : InInit("actions", packagesOf<KoInit::command, KoInit::dragAndDrop, KoInit::scriptingAPI, KoInit::internalAPI,
                                KoInit::resmgt, KoInit::pluginAPI, KoInit::base>()) {}
};

ActionsInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::actions>::getType() {
    return typeid(KoInit::actions);
}

} // namespace Ko
