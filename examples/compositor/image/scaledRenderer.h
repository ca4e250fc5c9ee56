#pragma once

#include "image/reducedPictures.h"
#include "image/render.h"

#include <memory>
#include <vector>

namespace compositor {

/// A rectangle of pixels.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(Area const&) const = default;
};

/// Composites pictures like a `Renderer`, but at a reduced size: for a view that shows the canvas smaller than it is. The time depends on
/// the number of pixels that are shown. At the full size the result is that of a `Renderer`. Any number of threads at the same time.
class ScaledRenderer {
public:
    /// @param scale above 0, at most 1. @param reduced shared by renderers of the same pictures.
    ScaledRenderer(std::vector<PlacedPicture> layers, double scale, std::shared_ptr<ReducedPictures> reduced);

    /// Renders a part of the scaled canvas.
    /// @param target as many pixels as the area has, row by row.
    void render(Area const& area, std::span<Colour> target) const;

private:
    struct Row;

    bool hides(PlacedPicture const& layer, Area const& area) const;
    void blend(PlacedPicture const& layer, Picture const& reduced, Row const& row, std::vector<Colour>& sampled) const;

    std::vector<PlacedPicture> _layers;
    double _scale;
    int _level;
    std::shared_ptr<ReducedPictures> _reduced;
};

} // namespace compositor
