#pragma once

#include "base/baseApi.h"
#include "base/exBase.h"

#include <atomic>
#include <functional>
#include <thread>

namespace Ko {

/// A start-up cannot go on; the reason names the packages, the variable or the file.
class KO_BASE_API InInitEx : public ExBase {
public:
    /// As `ExBase`.
    InInitEx(char const* file, int line, std::string reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// Starts and ends the framework: initialises every registered package after those that it depends on, and finalises them
/// in reverse. Packages that do not depend on each other are initialised in the order of their registration.
///
/// Called on one thread, which becomes the application thread. A process initialises once: not again after `finalize`, and
/// not after a start-up that failed.
class KO_BASE_API InInitMgr {
public:
    /// How the packages of a library are initialised that is opened while the process runs.
    enum InitType {
        /// The start of the process. No library may be opened in this mode.
        Standard = 0,
        /// A start-up of its own, after the first one: `InReinitGuard`.
        Reinitialization = 1,
        /// Part of the start-up that is going on: `InRecursiveInitGuard`.
        Recursive = 2
    };

    /// Initialises the registered packages. Assignments to their variables are removed from the command line.
    ///
    /// If a package is missing, packages depend on each other in a circle, two packages have the same tag, or a hook
    /// throws, the packages that were initialised are finalised again in reverse.
    /// @param argc is the number of arguments that are left, after the call.
    /// @param argv ends with a null pointer.
    /// @throws InInitEx. An exception of a hook is passed on with the package's name before its reason if it derives from
    ///   ExBase; any other one becomes an InInitEx with its text, or with the name of its type if it has no text.
    ///   ExAssertionFailed while the process is initialised or being initialised.
    static void initialize(int& argc, char** argv);
    /// Initialises the registered packages, without a command line.
    /// @throws as the other `initialize`.
    static void initialize();

    /// Calls the pre-finalise hooks of all packages and then their finalise hooks. A hook that throws keeps no other
    /// from being called. Does nothing if the process is not initialised.
    /// @throws the first exception of a hook, after the last hook, as `initialize` does; the others are written to standard
    ///   error.
    static void finalize();

    /// Whether the framework may be used: from the return of `initialize` to the call of `finalize`. Any thread.
    [[nodiscard]] static bool isInitialized() noexcept;
    /// Whether the calling thread is the one that initialised; also true after it has finalised. Any thread.
    [[nodiscard]] static bool isApplicationThread() noexcept {
        // Written once, before the application starts threads that could ask.
        return _applicationThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

private:
    static std::atomic<std::thread::id> _applicationThread;
};

/// Initialises the framework, and finalises it at the end of the scope.
class KO_BASE_API InInitScope {
public:
    /// As `InInitMgr::initialize(argc, argv)`.
    [[nodiscard]] InInitScope(int& argc, char** argv) { InInitMgr::initialize(argc, argv); }
    /// As `InInitMgr::initialize()`.
    [[nodiscard]] InInitScope() { InInitMgr::initialize(); }
    /// @throws as `InInitMgr::finalize()`; while another exception is passing, the text is written to standard error instead.
    ~InInitScope() noexcept(false);
    InInitScope(InInitScope const&) = delete;
    InInitScope& operator=(InInitScope const&) = delete;
};

/// Base of the two guards below: while a guard exists, the packages that register on this thread belong to it, unless a
/// guard within it owns them.
class KO_BASE_API InOpeningGuard {
public:
    InOpeningGuard(InOpeningGuard const&) = delete;
    InOpeningGuard& operator=(InOpeningGuard const&) = delete;

protected:
    InOpeningGuard();
    /// Forgets the packages that registered within the scope and were not initialised. Packages of further libraries that
    /// the opened one needed wait for the next library that needs them.
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
    [[nodiscard]] InReinitGuard() = default;

    /// Initialises the packages that belong to the guard, and the packages outside of any guard that they need; then
    /// calls their post-initialise hooks.
    ///
    /// When one fails, the packages of the opened library are finalised again, with all packages that depend on them.
    /// Packages of further libraries that it needed stay, for the next library that needs them.
    /// @throws as `InInitMgr::initialize`.
    void initializePackages();
};

/// The scope in which a hook of a package opens a library while a start-up goes on: the post-initialise hooks are called
/// with those of that start-up. When none goes on in this thread, it is like `InReinitGuard`.
class KO_BASE_API InRecursiveInitGuard : private InOpeningGuard {
public:
    /// Called with the exception of a post-initialise hook that failed after `initializePackages` had returned.
    using LateFailure = std::function<void(ExBase const&)>;

    [[nodiscard]] InRecursiveInitGuard() = default;

    /// As `initializePackages(LateFailure const&)`; a late failure is written to standard error.
    /// @throws as `InInitMgr::initialize`.
    void initializePackages();
    /// As `InReinitGuard::initializePackages()`, but for the post-initialise hooks, which are called later. When one fails,
    /// the packages of the opened library are finalised again, with all packages that depend on them, and the start-up goes
    /// on. Only ExProgramAborted ends it.
    /// @param onLateFailure is called once for each such failure, after the packages were finalised.
    /// @throws as `InInitMgr::initialize`.
    void initializePackages(LateFailure const& onLateFailure);
};

} // namespace Ko
