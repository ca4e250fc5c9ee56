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

    /// Makes a guard the one to which packages belong that register on this thread.
    /// @returns the one before; both may be null.
    static InOpeningGuard const* enter(InOpeningGuard const* guard) noexcept;

    void add(InPackageInit* package);
    void remove(InPackageInit* package);
    /// Under which the command line assigns the variables of the packages that wait.
    std::vector<std::string> argumentAliases();

    /// Initialises what waits and belongs to the guard, or to none where that is null.
    void initialize(InOpeningGuard const* guard, InInitMgr::InitType type);
    /// Forgets what waits and belongs to the guard, but for packages of libraries that the opened one only needed.
    void drop(InOpeningGuard const* guard) noexcept;
    void finalizeAll();

private:
    // Packages whose post-initialise hooks are called together.
    struct StartUp;
    // What is initialised together.
    struct Batch;
    struct Waiting {
        InPackageInit* package;
        InOpeningGuard const* guard;
    };
    struct ToPostInitialize {
        InPackageInit* package;
        StartUp const* startUp;
    };

    Packages take(InOpeningGuard const* guard);
    void takeDependencies(Packages& batch);
    bool isInitialized(InPackageInit::Type type);
    void orderPackages(Batch& batch);
    void initializePackages(Batch& batch);
    void noteInitialized(InPackageInit& package);
    void callPostInitialize(StartUp const& startUp, Batch& batch);
    void callPostInitializeOfRest(StartUp const& startUp);
    InPackageInit* nextToPostInitialize(StartUp const& startUp);
    bool isDoomed(InPackageInit const& package, Batch const& batch) const;
    void takeBack(Batch const& batch);
    template <class Choice>
    void finalizePackages(Choice isChosen, std::exception_ptr& firstError);

    std::mutex _mutex;
    std::vector<Waiting> _waiting;
    Packages _initialized;
    std::vector<ToPostInitialize> _toPostInitialize;
};

} // namespace Ko
