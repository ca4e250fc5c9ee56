#include "host/plugIns.h"

#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "resmgt/msgServer.h"
#include "resmgt/osFile.h"
#include "resmgt/osFsUtils.h"
#include "resmgt/osSharedLib.h"

#include <ostream>

namespace compositor {

namespace {

using namespace Ko;

constexpr char const* types[] = {"op", "gen"};

/// Records the opened files, and the failures that the framework reports.
class Notes final : public PimUtils::Callback {
public:
    Notes(std::map<std::string, std::string>& failures, std::ostream& errors) : _failures(failures) {
        MsgProtocol::setHandler([this, &errors](Msg const& message) {
            errors << message.getText() << std::endl;
            if (message.getText().find(_opened) != std::string::npos) _failures[_opened] = message.getText();
        });
    }
    ~Notes() override { MsgProtocol::setHandler({}); }
    Notes(Notes const&) = delete;
    Notes& operator=(Notes const&) = delete;

    void notifyLoading(OsFilePath const& path) override {
        _opened = path.getPath();
        _failures[_opened];
    }

private:
    std::map<std::string, std::string>& _failures;
    std::string _opened;
};

Vector<OsFilePath> findFiles(OsFilePath const& directory, std::string const& type) {
    return OsFsUtils::getChildren(directory, OsWildcardFilter("*." + type + OsSharedLib::getMinSuffix()));
}

bool isLibrary(OsFilePath const& path) {
    auto const info = OsFile::getInfo(path);
    return info && !info->isDirectory && info->size > 0;
}

} // namespace

PlugIns::PlugIns(std::ostream& errors) {
    Notes notes(_failures, errors);
    for (char const* const type : types)
        PimUtils::loadType(type, InInitMgr::Reinitialization, notes);
}

void PlugIns::list(std::ostream& output) const {
    for (OsFilePath const& directory : PimUtils::getFilePaths()) {
        output << directory.getPath() << "\n";
        for (char const* const type : types)
            for (OsFilePath const& path : findFiles(directory, type))
                output << "  " << path.getFileName().getPath() << ": " << stateOf(path) << "\n";
    }
}

std::string PlugIns::stateOf(Ko::OsFilePath const& path) const {
    auto const opened = _failures.find(path.getPath());
    if (opened != _failures.end()) return opened->second.empty() ? "loaded" : "failed: " + opened->second;
    if (!isLibrary(path)) return "not a library";
    return PimPlugInMgr::getInstance().isLoaded(path) ? "not loaded: one of that name was before" : "filtered out";
}

} // namespace compositor
