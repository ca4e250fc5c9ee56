#pragma once

#include "base/exBase.h"
#include "framework/plugInMgr/pimReport.h"

namespace Ko {

/// The report of this process. Any thread; no user code runs under its lock.
class PimRecords {
public:
    [[nodiscard]] static PimReport getReport();

    /// Adds a directory, once.
    static void addSearched(OsFilePath const& directory);
    /// Sets the state of a file. @returns whether it has changed.
    static bool set(OsFilePath const& path, PimStage stage, LiString const& reason);
    static void setDeclaration(OsFilePath const& path, std::optional<PimDeclaration> declaration);
    /// The library is about to be opened. Afterwards the next two functions need no memory.
    static void setLoading(OsFilePath const& path);
    static void setLoaded(OsFilePath const& path) noexcept;
    /// The reason is left out where no memory is left for it.
    static void setFailed(OsFilePath const& path, char const* reason) noexcept;

    /// The other file of the same name that was loaded, or that an attempt was made to load; nothing where that is this file.
    [[nodiscard]] static std::optional<OsFilePath> getNamesake(OsFilePath const& path);
    /// Why the library of that file name has failed; nothing where it has not.
    [[nodiscard]] static std::optional<LiString> getFailure(OsFilePath const& fileName);
};

} // namespace Ko
