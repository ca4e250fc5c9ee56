#pragma once

#include "base/src/inRegistry.h"
#include "base/src/libraryPath.h"

#include <utility>

namespace Ko {

struct InRegistry::StartUp {
    StartUp() : outer(std::exchange(innermost, this)) {}
    ~StartUp() { innermost = outer; }
    StartUp(StartUp const&) = delete;
    StartUp& operator=(StartUp const&) = delete;

    // The innermost of the start-ups of this thread.
    static inline thread_local StartUp* innermost = nullptr;
    StartUp* const outer;
};

/// All packages, or those of one batch that lie in one of two libraries.
struct InRegistry::Fault {
    bool includes(InPackageInit const* package, unsigned long ofBatch) const {
        if (isAll) return true;
        if (ofBatch != batch) return false;
        void const* const own = libraryOf(package);
        return own == library || own == otherLibrary;
    }

    bool isAll;
    unsigned long batch = 0;
    void const* library = nullptr;
    void const* otherLibrary = nullptr;
};

struct InRegistry::Batch {
    Batch(Packages toInitialize, InInitMgr::InitType initType, unsigned long batchNumber,
        std::shared_ptr<LateFailure const> lateFailure)
        : packages(std::move(toInitialize)), type(initType), number(batchNumber), onLateFailure(std::move(lateFailure)),
          // Its static objects are constructed after those of the libraries that it needs, so its packages come last.
          library(packages.empty() ? nullptr : libraryOf(packages.back())) {}

    // All packages if the start-up of the process failed. If that of an opened library failed, the packages of the batch in
    // that library, or in the library of the package that failed.
    Fault getFault() const {
        return {type == InInitMgr::Standard, number, library, failed ? libraryOf(failed) : library};
    }

    Packages packages;
    InInitMgr::InitType type;
    unsigned long number;
    std::shared_ptr<LateFailure const> onLateFailure;
    void const* library;
    // The package that is being initialised; after an exception, the one that threw it.
    InPackageInit* failed = nullptr;
    // How many packages were initialised, the present one included.
    std::size_t turns = 0;
};

} // namespace Ko
