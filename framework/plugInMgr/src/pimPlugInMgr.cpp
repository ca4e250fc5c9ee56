#include "framework/plugInMgr/pimPlugInMgr.h"

#include "base/assertions.h"
#include "base/lkRecLock.h"
#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/src/pimMessages.h"
#include "framework/plugInMgr/src/pimRecords.h"
#include "resmgt/lkSingleton.imp.h"
#include "resmgt/osSharedLib.h"

#include <mutex>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\plugInMgr\\src\\pimPlugInMgr"};
constexpr int loadedTwice = 148;
constexpr int standardMode = 170;

void openAfterStart(OsFilePath const& path) {
    InReinitGuard guard;
    OsSharedLib::open(path);
    guard.initializePackages();
}

// A post-initialise hook runs after this call, so its failure is reported here instead of being thrown.
void openWithinStart(OsFilePath const& path) {
    InRecursiveInitGuard guard;
    OsSharedLib::open(path);
    guard.initializePackages([path](ExBase const& error) {
        PimRecords::setFailed(path, error.what());
        PimMessages::initFailed(path, error);
    });
}

void openIn(InInitMgr::InitType mode, OsFilePath const& path) {
    switch (mode) {
    case InInitMgr::Recursive:
        return openWithinStart(path);
    case InInitMgr::Reinitialization:
        return openAfterStart(path);
    default:
        source.abort("Can't load plugins in standard initialization mode.", standardMode);
    }
}

class PIManager final : public PimPlugInMgr {
public:
    void loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) override;
    bool isLoaded(OsFilePath const& path) override;

private:
    // Recursive, for a plug-in that loads others while it is initialised.
    LkRecLock _lock{"PimPlugInMgr"};
    Set<OsFilePath> _loadedNames;
};

void PIManager::loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) {
    std::lock_guard const guard(_lock);
    if (_loadedNames.contains(path.getFileName())) throw PimEx::ExLibMultipleLoad(source.file(), loadedTwice, path);
    PimRecords::setLoading(path);
    try {
        // Inserted before the library is opened, so that a library that fails or loads itself is not opened again.
        _loadedNames.insert(path.getFileName());
        openIn(mode, path);
    } catch (std::exception const& error) {
        PimRecords::setFailed(path, error.what());
        throw;
    }
    PimRecords::setLoaded(path);
}

bool PIManager::isLoaded(OsFilePath const& path) {
    std::lock_guard const guard(_lock);
    return _loadedNames.contains(path.getFileName());
}

} // namespace

PimPlugInMgr::PimPlugInMgr() = default;
PimPlugInMgr::PimPlugInMgr(PimPlugInMgr const&) = default;
PimPlugInMgr& PimPlugInMgr::operator=(PimPlugInMgr const&) = default;
PimPlugInMgr::~PimPlugInMgr() = default;

PimPlugInMgr& PimPlugInMgr::getInstance() {
    return LkSingleton<PIManager>::getInstance();
}

} // namespace Ko
