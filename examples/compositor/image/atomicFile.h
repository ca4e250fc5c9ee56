#pragma once

#include "image/picture.h"

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

namespace compositor {

/// An unused path in the same folder: `path`, a random number and `extension`.
[[nodiscard]] std::filesystem::path temporaryPathBeside(
    std::filesystem::path const& path, std::string const& extension);

/// A new version of a file, which replaces the file as a whole or not at all. Keeps the permissions of the file, and follows
/// symbolic links. Where the file system allows it, the new version has no name before `commit`, so that a killed process
/// leaves no file.
class AtomicFile {
public:
    /// @throws ImageError naming the path and the system's reason, here and below.
    explicit AtomicFile(std::filesystem::path path);
    /// Without `commit`, the old version stays.
    ~AtomicFile();
    AtomicFile(AtomicFile const&) = delete;
    AtomicFile& operator=(AtomicFile const&) = delete;

    void write(std::span<std::byte const> bytes);
    /// Continues at the start of the file, to overwrite its first bytes.
    void rewind();
    /// Waits until the content is on the disk, then replaces the file.
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
