#pragma once

#include "base/inInitMgr.h"
#include "base/inPackageInit.h"

#include <memory>
#include <mutex>
#include <vector>

namespace Ko {

class InFirstError;

/// The packages of the process: those that wait to be initialised and those that are.
///
/// Its lock is held only while the lists are read or changed, never while a hook runs.
class InRegistry {
public:
    using Packages = std::vector<InPackageInit*>;
    using LateFailure = InRecursiveInitGuard::LateFailure;

    /// The registry of the process, which is never destroyed.
    static InRegistry& getInstance();

    /// Makes a guard the owner of the packages that register on this thread from now on.
    /// @returns the owner before; both may be null.
    static InOpeningGuard const* enter(InOpeningGuard const* guard) noexcept;

    /// Adds a package to the waiting ones.
    void add(InPackageInit* package);
    /// Forgets a package, whose object is being destroyed.
    void remove(InPackageInit* package);
    /// The aliases under which the command line assigns the variables of the waiting packages.
    std::vector<std::string> argumentAliases();

    /// Initialises the waiting packages of the guard. A null guard stands for the packages without one.
    /// @param onLateFailure is called for a package whose post-initialise hook runs and throws after this call; may be null.
    void initialize(InOpeningGuard const* guard, InInitMgr::InitType type,
        std::shared_ptr<LateFailure const> const& onLateFailure = nullptr);
    /// Forgets the waiting packages of the guard that lie in the opened library. Those of libraries that it needed wait
    /// without a guard, for the next library that needs them.
    void drop(InOpeningGuard const* guard) noexcept;
    /// Finalises all packages.
    /// @throws the first exception of a hook, after the last hook.
    void finalizeAll();

private:
    // Packages whose post-initialise hooks are called together.
    struct StartUp;
    // Packages that are initialised together.
    struct Batch;
    // The packages that are finalised after a failure, without those that depend on them.
    struct Fault;
    struct Waiting {
        InPackageInit* package;
        InOpeningGuard const* guard;
    };
    struct Initialized {
        InPackageInit* package;
        unsigned long batch;
        bool isAtFault = false;
    };
    struct ToPostInitialize {
        InPackageInit* package = nullptr;
        unsigned long batch = 0;
        StartUp const* startUp = nullptr;
        std::shared_ptr<LateFailure const> onFailure;
    };

    Packages take(InOpeningGuard const* guard);
    unsigned long nextBatchNumber();
    void takeDependencies(Packages& batch);
    InPackageInit const* findInitialized(InPackageInit::Type type);
    void initializePackages(Batch& batch);
    void noteInitialized(InPackageInit& package, Batch const& batch);

    void callPostInitialize(StartUp const& startUp, Batch& batch);
    void callPostInitializeOfRest(StartUp const& startUp);
    void callPostInitialize(ToPostInitialize const& entry, Batch* batch);
    ToPostInitialize nextToPostInitialize(StartUp const& startUp);

    void takeBack(Batch const& batch);
    void finalizePackages(Fault const& fault, InFirstError& errors);
    InPackageInit* lastAtFault(Fault const& fault, std::size_t& end);
    void markAtFault(Fault const& fault);
    bool dependsOnFault(InPackageInit const& package, std::size_t first, std::size_t end) const;

    std::mutex _mutex;
    std::vector<Waiting> _waiting;
    // In the order of their initialisation, so that each comes after those that it depends on.
    std::vector<Initialized> _initialized;
    std::vector<ToPostInitialize> _toPostInitialize;
    unsigned long _batches = 0;
};

} // namespace Ko
