#pragma once

#include "base/baseApi.h"
#include "base/exBase.h"

#include <atomic>
#include <thread>

namespace Ko {

/// A start-up that cannot go on; the reason names the packages, the variable or the file.
class KO_BASE_API InInitEx : public ExBase {
public:
    InInitEx(char const* file, int line, std::string reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// Starts and ends the framework: initialises every registered package after those that it depends on, packages that do
/// not depend on each other in the order in which they were registered, and finalises them in reverse.
///
/// Called on one thread, which becomes the application thread. A process initialises once.
class KO_BASE_API InInitMgr {
public:
    /// How packages are initialised that register later, with a library that is opened while the process runs.
    enum InitType {
        /// The start of the process. No library may be opened in this mode.
        Standard = 0,
        /// A start-up of its own, after the first one: `InReinitGuard`.
        Reinitialization = 1,
        /// Part of the start-up that is going on: `InRecursiveInitGuard`.
        Recursive = 2
    };

    /// Initialises the registered packages. What the command line assigns to their variables is taken out of `argv`.
    ///
    /// If a package is missing, packages depend on each other in a circle, or a hook throws, what was initialised is
    /// finalised again in reverse; an exception of a hook is passed on with the package's name before its reason.
    /// @throws InInitEx, and what a hook throws.
    static void initialize(int& argc, char** argv);
    static void initialize();

    /// Calls the pre-finalise hooks of all packages and then their finalise hooks. A hook that throws keeps no other
    /// from being called; the first exception is thrown at the end, the others are written to standard error.
    /// Does nothing if the process is not initialised.
    static void finalize();

    /// From the return of `initialize` to the call of `finalize`. Any thread.
    static bool isInitialized() noexcept;
    /// Whether the calling thread is the one that initialised; also true after it has finalised. Any thread.
    static bool isApplicationThread() noexcept {
        // Written once, before the application starts threads that could ask.
        return _applicationThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

private:
    static std::atomic<std::thread::id> _applicationThread;
};

/// Initialises at its begin and finalises at its end.
class KO_BASE_API InInitScope {
public:
    /// As `InInitMgr::initialize`:
    InInitScope(int& argc, char** argv) { InInitMgr::initialize(argc, argv); }
    InInitScope() { InInitMgr::initialize(); }
    /// @throws what `InInitMgr::finalize()` throws; while another exception is passing, that is written to standard
    /// error instead.
    ~InInitScope() noexcept(false);
    InInitScope(InInitScope const&) = delete;
    InInitScope& operator=(InInitScope const&) = delete;
};

/// What the two guards below share: the packages that register on this thread while the guard exists belong to it, but for
/// those that a guard within it takes.
class KO_BASE_API InOpeningGuard {
public:
    InOpeningGuard(InOpeningGuard const&) = delete;
    InOpeningGuard& operator=(InOpeningGuard const&) = delete;

protected:
    InOpeningGuard();
    /// Forgets the packages that registered within the scope and were not initialised; those of further libraries that the
    /// opened one needed wait for the next one that needs them.
    ~InOpeningGuard();

private:
    InOpeningGuard const* _outer;
};

/// The scope in which a library is opened after start-up:
///
///     InReinitGuard guard;
///     OsSharedLib::open(path);
///     guard.initializePackages();
class KO_BASE_API InReinitGuard : private InOpeningGuard {
public:
    InReinitGuard() = default;

    /// Initialises the packages that registered since, and what they need of those that registered outside of any guard;
    /// then calls their post-initialise hooks.
    ///
    /// When one fails, those of the opened library that were initialised are finalised again, with all that depends on
    /// them. Packages of further libraries that it needed stay, for the next one that needs them.
    /// @throws InInitEx, and what a hook throws.
    void initializePackages();
};

/// The same while a start-up is going on, from within a package's hook: the post-initialise hooks are called with those
/// of that start-up. When none is going on in this thread, it is like `InReinitGuard`.
class KO_BASE_API InRecursiveInitGuard : private InOpeningGuard {
public:
    InRecursiveInitGuard() = default;

    /// As `InReinitGuard::initializePackages()`.
    /// @throws InInitEx, and what a hook throws.
    void initializePackages();
};

} // namespace Ko
