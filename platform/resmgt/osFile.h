#pragma once

#include "base/exBase.h"
#include "resmgt/osFilePath.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace Ko {

/// What goes wrong with files.
class KO_RESMGT_API OsFileEx : public ExBase {
public:
    class ExInvalidPath;

protected:
    OsFileEx(char const* file, int line, char const* function, LiString const& problem);
};

/// A path at which there is not what was expected; the reason names the function and the path.
class KO_RESMGT_API OsFileEx::ExInvalidPath : public OsFileEx {
public:
    /// @param problem the system's own words, if it has any.
    ExInvalidPath(
        char const* file, int line, char const* function, OsFilePath const& path, LiString const& problem = {});
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// Facts about files.
class KO_RESMGT_API OsFile {
public:
    /// What the system tells of a file; of the file that it leads to, where it is a link.
    struct Info {
        /// False for everything else that a path can name.
        bool isDirectory;
        /// In bytes.
        std::uint64_t size;
        /// When its content was last written.
        std::chrono::system_clock::time_point modified;
    };

    /// @returns nothing where there is no such file, or the way to it is closed.
    static std::optional<Info> getInfo(OsFilePath const& path);
};

} // namespace Ko
