#include "framework/frameworkLib/frameworkInit.h"

#include "base/baseInit.h"
#include "framework/actions/actionsInit.h"
#include "framework/bgTask/bgTaskInit.h"
#include "framework/command/commandInit.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "framework/dragAndDrop/dragAndDropInit.h"
#include "framework/frameworkLib/src/frameworkBuildInfo.h"
#include "framework/plugInMgr/plugInMgrInit.h"
#include "framework/service/serviceInit.h"
#include "internalAPI/internalAPIInit.h"
#include "pluginAPI/pluginAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/resmgtInit.h"
#include "scriptingAPI/scriptingAPIInit.h"

namespace Ko {

namespace {

class FrameworkInit final : public InInit<KoInit::framework> {
public:
    FrameworkInit()
        : InInit("framework", packagesOf<KoInit::scriptingAPI, KoInit::internalAPI, KoInit::primitives, KoInit::resmgt,
                                  KoInit::pluginAPI, KoInit::base, KoInit::bgTask, KoInit::service, KoInit::command,
                                  KoInit::actions, KoInit::plugInMgr, KoInit::dragAndDrop>()) {}

    void initialize() override { InBuildInfoUtil::registerInfo(std::make_unique<FrameworkBuildInfo>()); }

    // No item on the clipboard may outlive the package that defines its class.
    void preFinalize() override {
        if (DrClipboard::isInitialized()) DrClipboard::getInstance().clear();
    }
};

FrameworkInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::framework>::getType() {
    return typeid(KoInit::framework);
}

} // namespace Ko
