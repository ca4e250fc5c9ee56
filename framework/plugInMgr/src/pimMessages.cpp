#include "framework/plugInMgr/src/pimMessages.h"

#include "framework/plugInMgr/src/pimLog.h"
#include "resmgt/msgServer.h"

namespace Ko {

namespace {

constexpr char const* refusal = "MSG_PLUGIN_REFUSED_ERROR";
constexpr char const* loadError = "MSG_PLUGIN_LOAD_EXCEPTION_ERROR";
constexpr char const* initError = "MSG_PLUGIN_INIT_EXCEPTION_ERROR";

void report(OsFilePath const& path, char const* attempt, char const* message, ExBase const& error) {
    MsgProtocol::display(MsgWarning(MsgServer::getInstance().format(message, {path.getPath(), error.getReason()})));
    PimLog::write(PimLog::failure, [&] {
        return LiString("Error while attempting to ") + attempt + " plugin '" + path.getPath() + "':\n" +
               error.getReason() + "\nPlugin ignored.";
    });
}

} // namespace

void PimMessages::initialize() {
    for (char const* const message : {refusal, loadError, initError})
        MsgServer::getInstance().subscribe(message);
}

void PimMessages::refused(OsFilePath const& path, ExBase const& error) {
    report(path, "check", refusal, error);
}

void PimMessages::loadFailed(OsFilePath const& path, ExBase const& error) {
    report(path, "load", loadError, error);
}

void PimMessages::initFailed(OsFilePath const& path, ExBase const& error) {
    report(path, "init", initError, error);
}

} // namespace Ko
