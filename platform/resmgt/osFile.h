#pragma once

#include "base/exBase.h"
#include "resmgt/osFilePath.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace Ko {

/// Base of the exceptions about files.
class KO_RESMGT_API OsFileEx : public ExBase {
public:
    class ExInvalidPath;

protected:
    OsFileEx(char const* file, int line, char const* function, LiString const& problem);
};

/// A path does not lead to a file of the expected kind; the reason names the function and the path.
class KO_RESMGT_API OsFileEx::ExInvalidPath : public OsFileEx {
public:
    /// @param problem the system's own message, if it has any.
    ExInvalidPath(
        char const* file, int line, char const* function, OsFilePath const& path, LiString const& problem = {});
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// Files as a whole.
class KO_RESMGT_API OsFile {
public:
    /// The properties of a file; for a link, of its target.
    struct Info {
        /// True for a directory, false for everything else.
        bool isDirectory;
        /// The size of the content in bytes.
        std::uint64_t size;
        /// The time of the last change of its content.
        std::chrono::system_clock::time_point modified;
    };

    /// The properties of a file; nothing where it does not exist or cannot be reached.
    [[nodiscard]] static std::optional<Info> getInfo(OsFilePath const& path);

    /// The content of a file.
    /// @throws OsFileEx::ExInvalidPath when it cannot be read or is no ordinary file.
    [[nodiscard]] static LiString read(OsFilePath const& path);
    /// Gives a file a new content, or creates it. The file has the old content until the new one is on the disk, also when the
    /// process or the system ends meanwhile. Keeps the permissions of the file, and follows symbolic links.
    /// @throws OsFileEx::ExInvalidPath when it cannot be written; the file is as before then.
    static void replace(OsFilePath const& path, LiString const& content);
};

} // namespace Ko
