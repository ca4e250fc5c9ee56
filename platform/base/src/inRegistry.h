#pragma once

#include "base/inInitMgr.h"
#include "base/inPackageInit.h"

#include <exception>
#include <mutex>
#include <vector>

namespace Ko {

/// The packages of the process: those that wait to be initialised and those that are.
///
/// Its lock is held only while the lists are read or changed, never while a hook runs.
class InRegistry {
public:
    using Packages = std::vector<InPackageInit*>;

    static InRegistry& getInstance();

    void add(InPackageInit* package);
    void remove(InPackageInit* package);
    /// Under which the command line assigns the variables of the packages that wait.
    std::vector<std::string> argumentAliases();

    /// Initialises what is waiting, as one start-up or as part of the one that is going on.
    void initializeWaiting(InInitMgr::InitType type);
    /// Forgets what is waiting.
    void dropWaiting();
    void finalizeAll();

private:
    Packages takeWaiting();
    Packages inOrder(Packages packages);
    bool isInitialized(InPackageInit::Type type);
    void initializeBatch(Packages const& batch);
    void callPostInitialize();
    Packages withDependents(Packages const& batch);
    void rollBack(Packages const& batch);
    void finalizePackages(Packages const& packages, std::exception_ptr& firstError);

    std::mutex _mutex;
    Packages _waiting;
    Packages _initialized;
    Packages _toPostInitialize;
    int _startUps = 0;
};

} // namespace Ko
