#pragma once

#include "image/colour.h"
#include "image/reducedPictures.h"
#include "image/render.h"

#include <cstddef>
#include <memory>
#include <span>
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

/// The lowest layers of a part of the picture, composed. Rendering that part again with the same lowest layers begins with them.
struct LayersBelow {
    std::vector<PlacedPicture> layers;
    std::vector<Light> composed;
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
    /// Renders a part again and again while its layers from `numBelow` on change.
    /// @param below of this part at this scale; updated where it does not fit.
    void render(Area const& area, std::span<Colour> target, std::size_t numBelow, LayersBelow& below) const;

private:
    struct Row;

    std::size_t lowestVisible(Area const& area) const;
    bool hides(PlacedPicture const& layer, Area const& area) const;
    void compose(std::size_t from, std::size_t to, Area const& area, std::span<Light> composed) const;
    void blend(PlacedPicture const& layer, Picture const& reduced, Row const& row, std::vector<Colour>& sampled) const;

    std::vector<PlacedPicture> _layers;
    double _scale;
    int _level;
    std::shared_ptr<ReducedPictures> _reduced;
};

} // namespace compositor
