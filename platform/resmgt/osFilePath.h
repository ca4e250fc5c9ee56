#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <string_view>

namespace Ko {

/// The path of a file or directory, in UTF-8. Only text: no function accesses the file system.
///
/// Separators at the end are dropped, so that "plugins/" and "plugins" are the same path. Extensions are written without
/// their dot, and a file name that only begins with a dot has none.
class KO_RESMGT_API OsFilePath {
public:
    OsFilePath() = default;
    /// @param path in UTF-8.
    OsFilePath(LiString path);
    OsFilePath(char const* path) : OsFilePath(LiString(path)) {}

    /// The separator between the directories of a path: '/'.
    [[nodiscard]] static char getSeparator() noexcept;
    /// The separator between the paths of a list: ':', or ';' on Windows.
    [[nodiscard]] static char getMultiPathSeparator() noexcept;

    /// The text, without separators at its end.
    [[nodiscard]] LiString const& getPath() const noexcept { return _path; }
    /// Whether the text contains a zero byte. The system would cut it there, so no function finds or opens such a file.
    [[nodiscard]] bool hasZeroByte() const noexcept { return _path.find('\0') != LiString::npos; }
    /// Whether the path is the empty text.
    [[nodiscard]] bool isEmpty() const noexcept { return _path.empty(); }
    /// Whether the path does not depend on the current directory.
    [[nodiscard]] bool isAbsolute() const noexcept;

    /// The part before the file name; may be empty.
    [[nodiscard]] OsFilePath getDirectory() const;
    /// The part after the last separator, with its extension.
    [[nodiscard]] OsFilePath getFileName() const;
    /// The file name without its last extension.
    [[nodiscard]] LiString getBaseName() const;
    /// The part after the last dot of the file name; empty where there is none.
    [[nodiscard]] LiString getExtension() const;
    /// The path with an extension added, also if it has one.
    [[nodiscard]] OsFilePath withExtension(LiString const& extension) const;

    /// `path` within `directory`; `path` itself where that is absolute or the directory is empty.
    friend KO_RESMGT_API OsFilePath operator+(OsFilePath const& directory, OsFilePath const& path);

    /// Less than, equal to or greater than 0, as this path comes before, is or comes after the other one by the rules of
    /// the system's file names: without regard to case on Windows.
    [[nodiscard]] int compare(OsFilePath const& other) const noexcept;
    /// Whether `compare` gives 0.
    bool operator==(OsFilePath const& other) const noexcept { return compare(other) == 0; }
    /// Whether `compare` gives less than 0.
    bool operator<(OsFilePath const& other) const noexcept { return compare(other) < 0; }

private:
    static bool isSeparator(char character) noexcept;
    std::string_view name() const noexcept;
    std::size_t extensionDot() const noexcept;

    LiString _path;
};

} // namespace Ko
