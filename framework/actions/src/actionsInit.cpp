#include "framework/actions/actionsInit.h"

#include "base/baseInit.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/src/actNoItems.h"
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

    void initialize() override {
        ActRegistry::initialize();
        ActBasicParam::initialize();
        ActNoItems::initialize();
        SnItemConvert<LiString>::initialize();
    }

    void finalize() override {
        SnItemConvert<LiString>::finalize();
        ActBasicParam::finalize();
        ActNoItems::finalize();
        ActRegistry::finalize();
    }
};

ActionsInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::actions>::getType() {
    return typeid(KoInit::actions);
}

} // namespace Ko
