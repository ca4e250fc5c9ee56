#pragma once

#include "image/picture.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace compositor {

/// A file that is read from its begin.
struct InputFile {
    /// Opens an ordinary file; devices and pipes, which may never end, are refused.
    /// @throws ImageError naming the path and the reason.
    explicit InputFile(std::filesystem::path const& path);

    std::ifstream stream;
    /// In bytes.
    std::uint64_t length = 0;
};

} // namespace compositor
