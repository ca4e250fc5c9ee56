#include "framework/command/commandInit.h"

#include "base/baseInit.h"
#include "framework/command/cmCommandStackManager.h"
#include "framework/command/src/cmLog.h"
#include "framework/command/src/cmUndoGuardFactory.h"
#include "framework/command/src/cmUndoGuardStack.h"
#include "internalAPI/internalAPIInit.h"
#include "pluginAPI/pluginAPIInit.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

class CommandInit final : public InInit<KoInit::command> {
public:
    CommandInit()
        : InInit("command", packagesOf<KoInit::internalAPI, KoInit::pluginAPI, KoInit::resmgt, KoInit::base>()) {}

    void initialize() override {
        CmLog::group.create();
        CmCommandStackManager::performInitialize();
        UndoGuardStack::initialize();
        PiUndoGuardFactory::registerFactory(std::make_unique<UndoGuardFactory>());
    }

    void finalize() override {
        PiUndoGuardFactory::registerFactory(nullptr);
        UndoGuardStack::finalize();
        CmCommandStackManager::performFinalize();
        CmLog::group.destroy();
    }
};

CommandInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::command>::getType() {
    return typeid(KoInit::command);
}

} // namespace Ko
