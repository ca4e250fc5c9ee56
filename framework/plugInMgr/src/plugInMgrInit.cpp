#include "framework/plugInMgr/plugInMgrInit.h"

#include "base/assertions.h"
#include "base/baseInit.h"
#include "base/inPaths.h"
#include "framework/plugInMgr/pimUtils.h"
#include "framework/plugInMgr/src/pimLog.h"
#include "framework/plugInMgr/src/pimSettings.h"
#include "resmgt/liStringParser.h"
#include "resmgt/msgServer.h"
#include "resmgt/osFsUtils.h"
#include "resmgt/resmgtInit.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\plugInMgr\\src\\plugInMgrInit"};
constexpr char const* directoryError = "MSG_PLUGIN_DIRECTORY_ERROR";
constexpr char const* pathError = "MSG_PLUGIN_PATH_ERROR";

class PlugInMgrInit final : public InInit<KoInit::plugInMgr> {
public:
    PlugInMgrInit() : InInit("plugInMgr", packagesOf<KoInit::resmgt, KoInit::base>()) {}

    void initialize() override;
    void finalize() override;

    PimSettings settings{*this};

private:
    void subscribeMessages();
    void addDirectories(OsFilePath const& installation);
    void addDirectory(OsFilePath const& directory, LiString const& name);
};

PlugInMgrInit package;

void PlugInMgrInit::initialize() {
    source.require(!PimLog::group.exists(), "_group == 0");
    PimLog::group.create();
    subscribeMessages();
    addDirectories(InPaths::getInstallDir());
}

void PlugInMgrInit::finalize() {
    source.require(PimLog::group.exists(), "_group != 0");
    PimLog::group.destroy();
}

void PlugInMgrInit::subscribeMessages() {
    MsgFileGuard const catalogue("plugInMgr.msg");
    for (char const* const message : {directoryError, pathError})
        MsgServer::getInstance().subscribe(message);
    PimUtils::initialize();
}

void PlugInMgrInit::addDirectories(OsFilePath const& installation) {
    InVariable<char const*> const& list = settings.directories.variable;
    if (!list.isValid()) return PimUtils::addPiDirectoryPath(installation + "plugins");
    LiString const separator(1, OsFilePath::getMultiPathSeparator());
    // A relative directory is remembered as an absolute one, since the current directory may change.
    for (LiString const& name : LiStringParser::splitList(list.get(), separator))
        addDirectory(OsFsUtils::getAbsolute(name), name);
}

void PlugInMgrInit::addDirectory(OsFilePath const& directory, LiString const& name) {
    if (OsFsUtils::isDirectory(directory)) return PimUtils::addPiDirectoryPath(directory);
    char const* const message = OsFsUtils::fileExists(directory) ? pathError : directoryError;
    MsgProtocol::display(MsgWarning(MsgServer::getInstance().format(message, {name})));
}

} // namespace

PimSettings const& PimSettings::get() {
    return package.settings;
}

template <>
InPackageInit::Type InInit<KoInit::plugInMgr>::getType() {
    return typeid(KoInit::plugInMgr);
}

} // namespace Ko
