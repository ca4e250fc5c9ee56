#pragma once

#include "image/picture.h"

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace compositor {

/// How a layer is laid over what lies below it.
///
/// In the formulas, s is a channel of the layer and d that of what lies below it, both in linear light and multiplied by their
/// alphas, a and b; a is the layer's own alpha times its opacity. The resulting alpha follows from the same formula, with a
/// in place of s and b in place of d.
enum class BlendMode {
    Over,     ///< s + d (1 - a)
    Add,      ///< min(1, s + d)
    Multiply, ///< s d + s (1 - b) + d (1 - a)
    Screen,   ///< s + d - s d
};

std::string toString(BlendMode mode);
/// @throws ImageError naming the modes that there are.
BlendMode blendModeOf(std::string const& name);

/// A picture where it is to lie on the canvas; any part may lie outside.
struct PlacedPicture {
    SharedPicture picture;
    int x = 0;
    int y = 0;
    float opacity = 1.0f;
    BlendMode blend = BlendMode::Over;
};

/// Is told how many steps of how many are done; returns false to stop.
using Progress = std::function<bool(int done, int total)>;

/// Composites pictures, the lowest first, over a transparent canvas: premultiplied, in linear light, tile by tile. Parts may
/// be rendered in any order and on several threads at once.
class Renderer {
public:
    /// @throws ImageError as `checkSize`.
    Renderer(Size canvas, std::vector<PlacedPicture> layers);

    /// Renders the pixels from (x, y) to the right.
    void renderRow(int x, int y, std::span<Colour> pixels) const;

    /// @returns false when it was stopped; no file is written then. @throws ImageError naming the path and the reason.
    bool renderToFile(std::filesystem::path const& path, Progress const& progress = {}) const;

private:
    Size _canvas;
    std::vector<PlacedPicture> _layers;
};

} // namespace compositor
