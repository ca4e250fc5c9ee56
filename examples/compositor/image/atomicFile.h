#pragma once

#include "image/picture.h"

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

namespace compositor {

/// A path in the same folder that neither exists nor is used by another process: that of the file, a random number and
/// `extension`.
[[nodiscard]] std::filesystem::path temporaryPathBeside(
    std::filesystem::path const& path, std::string const& extension);

/// A file that is written whole or not at all. It replaces the file that is there, keeps its permissions, and follows symbolic
/// links. Until `commit` it has no name where the file system allows that, so that a killed process leaves nothing.
class AtomicFile {
public:
    /// @throws ImageError naming the path and the system's reason, here and below.
    explicit AtomicFile(std::filesystem::path path);
    /// Without `commit`, the old file stays as it was.
    ~AtomicFile();
    AtomicFile(AtomicFile const&) = delete;
    AtomicFile& operator=(AtomicFile const&) = delete;

    void write(std::span<std::byte const> bytes);
    /// Overwrites from the begin.
    void rewind();
    /// Puts the file in its place when all of it is on the disk.
    void commit();

private:
    [[noreturn]] void fail(int error) const;
    void check(bool succeeded) const;
    void open();
    void giveName();

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::filesystem::path _path;
    // Empty while the file has no name.
    std::filesystem::path _temporary;
    std::unique_ptr<std::FILE, Close> _file;
};

} // namespace compositor
