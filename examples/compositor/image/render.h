#pragma once

#include "image/colour.h"
#include "image/picture.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace compositor {

/// How a layer is combined with the layers below it.
///
/// In the formulas, s is a channel of the layer and d the same channel of the layers below, both in linear light and multiplied
/// by their alphas a and b, where a is the layer's own alpha times its opacity. The resulting alpha follows from the same
/// formula, with a in place of s and b in place of d.
enum class BlendMode {
    Over,     ///< s + d (1 - a)
    Add,      ///< min(1, s + d)
    Multiply, ///< s d + s (1 - b) + d (1 - a)
    Screen,   ///< s + d - s d
};

[[nodiscard]] std::string toString(BlendMode mode);
/// @throws ImageError that lists the modes.
[[nodiscard]] BlendMode blendModeOf(std::string const& name);

/// A picture and its place on the canvas. It may be partly or completely outside.
struct PlacedPicture {
    SharedPicture picture;
    int x = 0;
    int y = 0;
    float opacity = 1.0f;
    BlendMode blend = BlendMode::Over;
    bool isVisible = true;

    /// Equal pictures are the same object.
    bool operator==(PlacedPicture const&) const = default;
};

/// Blends a row of a layer onto what lies below it.
/// @param below as many pixels as `source`.
void blendRow(BlendMode mode, std::span<Colour const> source, float opacity, std::span<Light> below);

/// Receives the number of completed steps and of all steps; returns false to stop.
using Progress = std::function<bool(int done, int total)>;

/// Composites pictures, the lowest first, over a transparent canvas: premultiplied, in linear light, tile by tile. Any number
/// of threads may use a renderer at the same time.
class Renderer {
public:
    /// @throws ImageError as `checkSize`.
    Renderer(Size canvas, std::vector<PlacedPicture> layers);

    /// Renders a part of the row `y` that starts at `x`.
    void renderRow(int x, int y, std::span<Colour> pixels) const;

    /// Renders into a PNG file.
    /// @returns false when `progress` stopped it; no file is written then. @throws ImageError naming the path and the reason.
    bool renderToFile(std::filesystem::path const& path, Progress const& progress = {}) const;

    /// Renders into a picture. @returns nothing when `progress` stopped it.
    [[nodiscard]] std::optional<Picture> renderToPicture(Progress const& progress = {}) const;

private:
    Size _canvas;
    std::vector<PlacedPicture> _layers;
};

} // namespace compositor
