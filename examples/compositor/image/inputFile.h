#pragma once

#include "image/picture.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace compositor {

/// A file that is read from its start.
struct InputFile {
    /// Opens a regular file. Refuses devices and pipes, which may be endless.
    /// @throws ImageError naming the path and the reason.
    explicit InputFile(std::filesystem::path const& path);

    std::ifstream stream;
    /// In bytes.
    std::uint64_t length = 0;
};

} // namespace compositor
