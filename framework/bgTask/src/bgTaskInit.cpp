#include "framework/bgTask/bgTaskInit.h"

#include "base/assertions.h"
#include "base/baseInit.h"
#include "base/inPaths.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgJobState.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/bgProcess.h"
#include "framework/bgTask/src/bgLog.h"
#include "internalAPI/internalAPIInit.h"
#include "primitives/primitivesInit.h"
#include "resmgt/msgServer.h"
#include "resmgt/osEnv.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\bgTask\\src\\bgTaskInit"};
constexpr int createdTwice = 74;
constexpr int neverCreated = 125;

constexpr char const* installationDirectory = "KO_INSTALL_DIR";

// The external programs of jobs inherit the variable.
void publishInstallationDirectory() {
    LiString value;
    if (OsEnv::getVariable(installationDirectory, value)) return;
    OsEnv::putVariable(LiString(installationDirectory) + "=" + InPaths::getInstallDir());
}

class BgTaskInit final : public InInit<KoInit::bgTask> {
public:
    BgTaskInit()
        : InInit("bgTask", packagesOf<KoInit::internalAPI, KoInit::primitives, KoInit::resmgt, KoInit::base>()) {}

    void initialize() override {
        source.require(!BgLog::group.exists(), "LgGroups::KO_XGLUE( MinorLevel, BgTask ) == 0", createdTwice);
        BgLog::group.create();
        {
            MsgFileGuard const catalogue("bgTask.msg");
            BgEx::initialize();
        }
        publishInstallationDirectory();
        BgJobIdle::performInitialize();
        BgJobWaiting::performInitialize();
        BgJobBusy::performInitialize();
        BgJobStopping::performInitialize();
        BgJobStopped::performInitialize();
        BgJobComplete::performInitialize();
        BgJobFailed::performInitialize();
        BgManager::performInitialize();
        BgProcess::performInitialize();
    }

    void preFinalize() override {
        if (BgManager::isInitialized()) BgManager::getInstance().stopAllJobs();
    }

    void finalize() override {
        BgProcess::performFinalize();
        BgManager::performFinalize();
        BgJobIdle::performFinalize();
        BgJobWaiting::performFinalize();
        BgJobBusy::performFinalize();
        BgJobStopping::performFinalize();
        BgJobStopped::performFinalize();
        BgJobComplete::performFinalize();
        BgJobFailed::performFinalize();
        BgEx::finalize();
        source.require(BgLog::group.exists(), "LgGroups::KO_XGLUE( MinorLevel, BgTask ) != 0", neverCreated);
        BgLog::group.destroy();
    }
};

BgTaskInit package;

} // namespace

template <>
InPackageInit::Type InInit<KoInit::bgTask>::getType() {
    return typeid(KoInit::bgTask);
}

} // namespace Ko
