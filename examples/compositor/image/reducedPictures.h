#pragma once

#include "image/picture.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace compositor {

/// Pictures at a half, a quarter, an eighth ... of their size, for drawing them small. Each is made when it is first asked for and kept
/// as long as the picture exists. Any thread.
class ReducedPictures {
public:
    /// The picture with its sides halved `level` times, rounded up; level 0 is the picture itself. The mean of four pixels is
    /// taken in linear light, weighted by their alphas.
    [[nodiscard]] SharedPicture get(SharedPicture const& picture, int level);
    /// Whether every pixel of the picture is opaque.
    [[nodiscard]] bool isOpaque(SharedPicture const& picture);

private:
    struct Entry {
        std::mutex mutex;
        // From level 1 on.
        std::vector<SharedPicture> levels;
        bool isOpaque = false;
        bool isExamined = false;
    };
    std::shared_ptr<Entry> entryOf(SharedPicture const& picture);

    std::mutex _mutex;
    std::map<std::weak_ptr<Picture const>, std::shared_ptr<Entry>, std::owner_less<>> _entries;
};

} // namespace compositor
