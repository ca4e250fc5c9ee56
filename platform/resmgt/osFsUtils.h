#pragma once

#include "resmgt/osFilePath.h"
#include "resmgt/osWildcardFilter.h"

namespace Ko {

/// Queries of the file system.
class KO_RESMGT_API OsFsUtils {
public:
    /// Whether there is a file or directory. A link counts as its target: a link that leads nowhere does not exist.
    [[nodiscard]] static bool fileExists(OsFilePath const& path);
    /// Whether there is a directory, or a link to one.
    [[nodiscard]] static bool isDirectory(OsFilePath const& path);
    /// The path with the current directory before it, without "." between its separators. An absolute path is returned as
    /// it is, and so is a relative one while the current directory does not exist.
    [[nodiscard]] static OsFilePath getAbsolute(OsFilePath const& path);
    /// The files and directories directly in a directory whose names match, with the directory before them, in the order
    /// of their names.
    /// @throws OsFileEx::ExInvalidPath when the directory cannot be read.
    [[nodiscard]] static Vector<OsFilePath> getChildren(OsFilePath const& directory, OsWildcardFilter const& filter);
};

} // namespace Ko
