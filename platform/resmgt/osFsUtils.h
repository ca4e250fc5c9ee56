#pragma once

#include "resmgt/osFilePath.h"
#include "resmgt/osWildcardFilter.h"

namespace Ko {

/// Looks into the file system.
class KO_RESMGT_API OsFsUtils {
public:
    /// Whether there is a file or directory. A link counts as what it leads to: one that leads nowhere does not exist:
    static bool fileExists(OsFilePath const& path);
    static bool isDirectory(OsFilePath const& path);
    /// The files and directories directly in a directory whose names match, with the directory before them, in the order
    /// of their names.
    /// @throws OsFileEx::ExInvalidPath when it cannot be read.
    static Vector<OsFilePath> getChildren(OsFilePath const& directory, OsWildcardFilter const& filter);
};

} // namespace Ko
