#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <string_view>

namespace Ko {

/// The path of a file or directory, in UTF-8. Only text: nothing here looks whether there is such a file.
///
/// Separators at the end are dropped, so that "plugins/" and "plugins" are the same path. Extensions are written without
/// their dot, and a file name that only begins with a dot has none.
class KO_RESMGT_API OsFilePath {
public:
    OsFilePath() = default;
    /// @param path in UTF-8.
    OsFilePath(LiString path);
    OsFilePath(char const* path) : OsFilePath(LiString(path)) {}

    /// Between the directories of a path: '/'.
    static char getSeparator() noexcept;
    /// Between the paths of a list: ':', or ';' on Windows.
    static char getMultiPathSeparator() noexcept;

    /// The text, without separators at its end; an absolute path does not depend on the current directory:
    LiString const& getPath() const noexcept { return _path; }
    bool isEmpty() const noexcept { return _path.empty(); }
    bool isAbsolute() const noexcept;

    /// What stands before the file name; empty where there is nothing.
    OsFilePath getDirectory() const;
    /// What stands behind the last separator, with its extension.
    OsFilePath getFileName() const;
    /// The file name without its last extension.
    LiString getBaseName() const;
    /// What stands behind the last dot of the file name.
    LiString getExtension() const;
    /// The path with an extension behind it, also behind one that it has.
    OsFilePath withExtension(LiString const& extension) const;

    /// `path` within `directory`; `path` itself where that is absolute or the directory is empty.
    friend KO_RESMGT_API OsFilePath operator+(OsFilePath const& directory, OsFilePath const& path);

    /// Less than, equal to or greater than 0, as this path comes before, is or comes after the other one by the rules of
    /// the system's file names: without regard to case on Windows.
    int compare(OsFilePath const& other) const noexcept;
    /// As `compare`:
    bool operator==(OsFilePath const& other) const noexcept { return compare(other) == 0; }
    bool operator<(OsFilePath const& other) const noexcept { return compare(other) < 0; }

private:
    static bool isSeparator(char character) noexcept;
    std::string_view name() const noexcept;
    std::size_t extensionDot() const noexcept;

    LiString _path;
};

} // namespace Ko
