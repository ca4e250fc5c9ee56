#include "plugIns/plugIn.h"

#include <algorithm>

namespace {

// From -1 at one edge of a picture to 1 at the other.
float distance(int place, int side) {
    return (2.0f * static_cast<float>(place) + 1.0f) / static_cast<float>(side) - 1.0f;
}

// Fades a picture out towards its corners.
compositor::Picture applyVignette(compositor::Picture const& picture, compositor::Statement const& input) {
    float const strength = input.number(1, 0.0f, 1.0f);
    compositor::Picture result = picture;
    auto const [width, height] = result.size();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float const right = distance(x, width), down = distance(y, height);
            float const share = 1.0f - strength * std::min(1.0f, (right * right + down * down) / 2.0f);
            std::uint8_t& alpha = result.row(y)[static_cast<std::size_t>(x)].alpha;
            alpha = static_cast<std::uint8_t>(static_cast<float>(alpha) * share + 0.5f);
        }
    return result;
}

// When the library is opened, the package registers the action. The texts describe its arguments, the numbers are how many it
// takes at least and at most.
compositor::PlugIn<struct VignetteTag> package("vignette", {"Vignette", "a strength from 0 to 1", 1, 1}, applyVignette);

} // namespace
