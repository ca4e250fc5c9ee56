#include "framework/plugInMgr/pimPlugInMgr.h"

#include "base/assertions.h"
#include "base/lkRecLock.h"
#include "framework/plugInMgr/pimEx.h"
#include "resmgt/lkSingleton.imp.h"
#include "resmgt/osSharedLib.h"

#include <mutex>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\plugInMgr\\src\\pimPlugInMgr"};
constexpr int loadedTwice = 148;
constexpr int standardMode = 170;

template <class Guard>
void openWithin(OsFilePath const& path) {
    Guard guard;
    OsSharedLib::open(path);
    guard.initializePackages();
}

class PIManager final : public PimPlugInMgr {
public:
    void loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) override;
    bool isLoaded(OsFilePath const& path) override;

private:
    // Taken again by a plug-in that loads others while it is initialised.
    LkRecLock _lock{"PimPlugInMgr"};
    Set<OsFilePath> _loadedNames;
};

void PIManager::loadPlugIn(OsFilePath const& path, InInitMgr::InitType mode) {
    std::lock_guard const guard(_lock);
    // Before it is opened: one that fails, or that comes to load itself, is not tried again.
    if (!_loadedNames.insert(path.getFileName()).second)
        throw PimEx::ExLibMultipleLoad(source.file(), loadedTwice, path);
    switch (mode) {
    case InInitMgr::Recursive:
        return openWithin<InRecursiveInitGuard>(path);
    case InInitMgr::Reinitialization:
        return openWithin<InReinitGuard>(path);
    default:
        source.abort("Can't load plugins in standard initialization mode.", standardMode);
    }
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
