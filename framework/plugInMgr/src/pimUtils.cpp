#include "framework/plugInMgr/pimUtils.h"

#include "base/assertions.h"
#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/src/pimInterfaces.h"
#include "framework/plugInMgr/src/pimLog.h"
#include "framework/plugInMgr/src/pimMessages.h"
#include "framework/plugInMgr/src/pimOrder.h"
#include "framework/plugInMgr/src/pimRecords.h"
#include "framework/plugInMgr/src/pimRules.h"
#include "resmgt/osFile.h"
#include "resmgt/osFsUtils.h"
#include "resmgt/osSharedLib.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr char const* source = "framework\\plugInMgr\\src\\pimUtils";
constexpr int notADirectory = 380;

class NullCallback final : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const&) override {}
};

Vector<OsFilePath> filePaths;
NullCallback nullCallback;

bool passOver(OsFilePath const& path, LiString const& why, PimUtils::Callback& callback) {
    PimLog::write(PimLog::selection, [&] { return "Plugin '" + path.getPath() + "' " + why; });
    PimRecords::set(path, PimStage::Found, why);
    callback.notifyRefused(path, PimStage::Found, PimEx::ExRefused(source, __LINE__, why));
    return false;
}

bool refuse(OsFilePath const& path, ExBase const& error, PimUtils::Callback& callback) {
    // Every load checks the file again. The user is warned once.
    if (PimRecords::set(path, PimStage::Refused, error.getReason())) PimMessages::refused(path, error);
    callback.notifyRefused(path, PimStage::Refused, error);
    return false;
}

using Message = void (*)(OsFilePath const& path, ExBase const& error);

bool fail(OsFilePath const& path, ExBase const& error, Message display, PimUtils::Callback& callback) {
    // What another thread has loaded meanwhile has not failed.
    if (!dynamic_cast<PimEx::ExLibMultipleLoad const*>(&error))
        PimRecords::set(path, PimStage::Failed, error.getReason());
    display(path, error);
    callback.notifyRefused(path, PimStage::Failed, error);
    return false;
}

bool open(OsFilePath const& path, InInitMgr::InitType mode, PimUtils::Callback& callback) {
    try {
        callback.notifyLoading(path);
        PimPlugInMgr::getInstance().loadPlugIn(path, mode);
        return true;
    } catch (ExProgramAborted const&) {
        throw;
    } catch (OsSharedLibEx const& error) {
        return fail(path, error, &PimMessages::loadFailed, callback);
    } catch (ExBase const& error) {
        return fail(path, error, &PimMessages::initFailed, callback);
    }
}

// Nothing where the plug-in is refused.
std::optional<Vector<OsFilePath>> findRequired(OsFilePath const& path, PimUtils::Callback& callback) {
    try {
        return PimOrder(path).getRequired();
    } catch (PimEx::ExRefused const& error) {
        refuse(path, error, callback);
    } catch (OsSharedLibEx const& error) {
        refuse(path, error, callback);
    }
    return std::nullopt;
}

// Opens a plug-in after those that it requires.
bool openInOrder(OsFilePath const& path, InInitMgr::InitType mode, PimUtils::Callback& callback) {
    auto const files = findRequired(path, callback);
    if (!files) return false;
    for (OsFilePath const& required : *files) {
        if (!PimPlugInMgr::getInstance().isLoaded(required)) open(required, mode, callback);
        if (LiString const failure = PimOrder::getFailure(required.getFileName()); !failure.empty())
            return refuse(path, PimEx::ExRefused(source, __LINE__, failure), callback);
    }
    return open(path, mode, callback);
}

// A library of that file name is present. Only this one is reported if it is another file.
void noteNamesake(OsFilePath const& path, PimUtils::Callback& callback) {
    if (path.getFileName() == path) return;
    auto const other = PimRecords::getNamesake(path);
    if (!other) return;
    PimEx::ExLibMultipleLoad const error(source, __LINE__, path);
    PimRecords::set(path, PimStage::Found, "has the file name of " + other->getPath() + ", which was loaded before.");
    callback.notifyRefused(path, PimStage::Found, error);
}

// Returns whether the plug-in is present.
bool loadFile(OsFilePath const& path, InInitMgr::InitType mode, PimUtils::Callback& callback) {
    if (PimPlugInMgr::getInstance().isLoaded(path)) {
        noteNamesake(path, callback);
        return true;
    }
    if (PimRules::isFilteredOut(path)) return passOver(path, "is filtered out.", callback);
    auto const info = OsFile::getInfo(path);
    if (!info) return passOver(path, "does not exist.", callback);
    if (info->isDirectory || info->size == 0) return passOver(path, "is a directory or empty.", callback);
    return openInOrder(path, mode, callback);
}

LiString patternOf(std::string const& type) {
    return "*." + type + OsSharedLib::getMinSuffix();
}

} // namespace

PimUtils::Callback::~Callback() = default;

void PimUtils::Callback::notifyRefused(OsFilePath const&, PimStage, ExBase const&) {}

void PimUtils::initialize() {
    PimMessages::initialize();
    PimRules::initialize();
}

void PimUtils::setInterface(std::string_view interface) {
    PimInterfaces::set(interface);
}

PimReport PimUtils::getReport() {
    return PimRecords::getReport();
}

void PimUtils::addPiDirectoryPath(OsFilePath const& directory) {
    filePaths.push_back(directory);
}

void PimUtils::setFilePaths(Vector<OsFilePath> const& directories) {
    filePaths = directories;
}

Vector<OsFilePath> const& PimUtils::getFilePaths() {
    return filePaths;
}

PimUtils::Callback& PimUtils::getNullCb() {
    return nullCallback;
}

int PimUtils::loadType(
    OsFilePath const& directory, std::string const& type, InInitMgr::InitType mode, Callback& callback) {
    return loadWildcard(directory, patternOf(type), mode, callback);
}

int PimUtils::loadType(std::string const& type, InInitMgr::InitType mode, Callback& callback) {
    return loadWildcard(patternOf(type), mode, callback);
}

int PimUtils::loadWildcard(
    OsFilePath const& directory, std::string const& pattern, InInitMgr::InitType mode, Callback& callback) {
    if (!OsFsUtils::isDirectory(directory))
        throw OsFileEx::ExInvalidPath(source, notADirectory, "PimUtils::loadWildcard", directory);
    PimRecords::addSearched(directory);
    int loaded = 0;
    for (OsFilePath const& path : OsFsUtils::getChildren(directory, OsWildcardFilter(pattern)))
        if (loadFile(path, mode, callback)) ++loaded;
    return loaded;
}

int PimUtils::loadWildcard(std::string const& pattern, InInitMgr::InitType mode, Callback& callback) {
    int loaded = 0;
    // A copy, as a plug-in may add a directory while it is loaded.
    for (OsFilePath const& directory : Vector<OsFilePath>(filePaths))
        loaded += loadWildcard(directory, pattern, mode, callback);
    return loaded;
}

bool PimUtils::load(OsFilePath const& path, InInitMgr::InitType mode) {
    return load(path, mode, nullCallback);
}

bool PimUtils::load(OsFilePath const& path, InInitMgr::InitType mode, Callback& callback) {
    bool const isLibrary = path.getExtension() == OsSharedLib::getSuffix() + 1;
    OsFilePath const file = isLibrary ? path : OsFilePath(path.getPath() + OsSharedLib::getMinSuffix());
    if (file.getFileName() != file) return loadFile(file, mode, callback);
    Vector<OsFilePath> const directories = filePaths;
    // An empty path names no directory. Joined with the file name, it would mean the current directory.
    return std::any_of(directories.begin(), directories.end(), [&](OsFilePath const& directory) {
        if (directory.isEmpty()) return false;
        PimRecords::addSearched(directory);
        return loadFile(directory + file, mode, callback);
    });
}

} // namespace Ko
