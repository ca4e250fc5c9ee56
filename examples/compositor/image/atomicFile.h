#pragma once

#include "image/picture.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace compositor {

/// A file that is written whole or not at all: under another name in the same folder, and renamed at the end. Destroyed
/// before that, it leaves nothing behind and the old file as it was.
class AtomicFile {
public:
    /// @throws ImageError naming the path and the system's reason, here and below.
    explicit AtomicFile(std::filesystem::path path);
    ~AtomicFile();
    AtomicFile(AtomicFile const&) = delete;
    AtomicFile& operator=(AtomicFile const&) = delete;

    void write(void const* bytes, std::size_t count);
    /// Puts the file in its place.
    void commit();

private:
    [[noreturn]] void fail(int error) const;

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::filesystem::path _path;
    std::filesystem::path _temporary;
    std::unique_ptr<std::FILE, Close> _file;
};

} // namespace compositor
