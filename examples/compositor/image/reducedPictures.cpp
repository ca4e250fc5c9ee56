#include "image/reducedPictures.h"

#include "image/colour.h"

#include <algorithm>

namespace compositor {

namespace {

Light operator+(Light const& a, Light const& b) {
    return {a.red + b.red, a.green + b.green, a.blue + b.blue, a.alpha + b.alpha};
}

// At an odd edge the last row and column count twice.
Picture halved(Picture const& picture) {
    Size const from = picture.size();
    Picture result({(from.width + 1) / 2, (from.height + 1) / 2});
    for (int y = 0; y < result.size().height; ++y) {
        auto const upper = picture.row(2 * y);
        auto const lower = picture.row(std::min(2 * y + 1, from.height - 1));
        auto const target = result.row(y);
        for (std::size_t x = 0; x < target.size(); ++x) {
            std::size_t const left = 2 * x, right = std::min(left + 1, upper.size() - 1);
            bool const isPlain =
                upper[left] == upper[right] && upper[left] == lower[left] && upper[left] == lower[right];
            target[x] = isPlain ? upper[left]
                                : toColour(toLight(upper[left], 0.25f) + toLight(upper[right], 0.25f) +
                                           toLight(lower[left], 0.25f) + toLight(lower[right], 0.25f));
        }
    }
    return result;
}

bool examine(Picture const& picture) {
    for (int y = 0; y < picture.size().height; ++y)
        if (!std::ranges::all_of(picture.row(y), [](Colour colour) { return colour.alpha == 255; })) return false;
    return true;
}

} // namespace

SharedPicture ReducedPictures::get(SharedPicture const& picture, int level) {
    if (level == 0) return picture;
    auto const entry = entryOf(picture);
    std::scoped_lock const lock(entry->mutex);
    auto const wanted = static_cast<std::size_t>(level);
    while (entry->levels.size() < wanted) {
        Picture const& larger = entry->levels.empty() ? *picture : *entry->levels.back();
        entry->levels.push_back(std::make_shared<Picture const>(halved(larger)));
    }
    return entry->levels[wanted - 1];
}

bool ReducedPictures::isOpaque(SharedPicture const& picture) {
    auto const entry = entryOf(picture);
    std::scoped_lock const lock(entry->mutex);
    if (!entry->isExamined) entry->isOpaque = examine(*picture);
    entry->isExamined = true;
    return entry->isOpaque;
}

std::shared_ptr<ReducedPictures::Entry> ReducedPictures::entryOf(SharedPicture const& picture) {
    std::scoped_lock const lock(_mutex);
    auto const found = _entries.find(picture);
    if (found != _entries.end()) return found->second;
    std::erase_if(_entries, [](auto const& entry) { return entry.first.expired(); });
    return _entries.emplace(picture, std::make_shared<Entry>()).first->second;
}

} // namespace compositor
