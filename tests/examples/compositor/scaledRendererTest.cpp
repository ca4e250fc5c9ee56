#include "image/scaledRenderer.h"
#include "tests/examples/compositor/pictures.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace compositor;
using namespace KoTest;

SharedPicture noise(Size size, std::mt19937& random, bool isOpaque) {
    return std::make_shared<Picture const>(paint(size, [&](int, int) {
        auto const bits = static_cast<std::uint32_t>(random());
        auto const byte = [bits](int shift) { return static_cast<std::uint8_t>(bits >> shift); };
        return Colour{byte(0), byte(8), byte(16), isOpaque ? std::uint8_t{255} : byte(24)};
    }));
}

Picture render(std::vector<PlacedPicture> layers, double scale, Area const& area) {
    Picture result({area.width, area.height});
    std::vector<Colour> pixels(result.size().pixels());
    ScaledRenderer(std::move(layers), scale, std::make_shared<ReducedPictures>()).render(area, pixels);
    for (int y = 0; y < area.height; ++y)
        std::copy_n(pixels.begin() + std::ptrdiff_t{y} * area.width, area.width, result.row(y).begin());
    return result;
}

TEST(ScaledRenderer, AtFullSizeIsTheRenderer) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 50; ++round) {
        std::vector<PlacedPicture> layers;
        for (int count = 0; count < 4; ++count)
            layers.push_back({noise({10 + int(random() % 30), 10 + int(random() % 30)}, random, random() % 2 == 0),
                int(random() % 60) - 25, int(random() % 60) - 25, random() % 3 == 0 ? 1.0f : 0.5f,
                static_cast<BlendMode>(random() % 4), random() % 5 != 0});
        std::optional<Picture> const expected = Renderer({40, 30}, layers).renderToPicture();
        EXPECT_EQ(*expected, render(layers, 1.0, {0, 0, 40, 30})) << "seed " << seed << ", round " << round;
        Picture const part = render(layers, 1.0, {7, 9, 5, 4});
        for (int y = 0; y < 4; ++y)
            EXPECT_TRUE(std::ranges::equal(expected->row(y + 9).subspan(7, 5), part.row(y))) << "seed " << seed;
    }
}

TEST(ScaledRenderer, RendersTheSameWhetherOrNotItBeginsWithTheLayersBelow) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    auto const reduced = std::make_shared<ReducedPictures>();
    std::vector<PlacedPicture> layers;
    for (int count = 0; count < 4; ++count)
        layers.push_back({noise({40, 40}, random, count == 2), 0, 0, 0.5f, static_cast<BlendMode>(count)});
    LayersBelow below;
    std::vector<Colour> expected(20 * 15), shown(20 * 15);
    for (int round = 0; round < 100; ++round) {
        PlacedPicture& changed = layers[random() % layers.size()];
        changed.x = int(random() % 40) - 20;
        changed.opacity = random() % 2 == 0 ? 1.0f : 0.5f;
        if (random() % 10 == 0) layers.pop_back();
        if (layers.empty()) break;
        ScaledRenderer const renderer(layers, 0.5, reduced);
        renderer.render({0, 0, 20, 15}, expected);
        renderer.render({0, 0, 20, 15}, shown, random() % 5, below);
        ASSERT_EQ(expected, shown) << "seed " << seed << ", round " << round;
    }
}

// A plain picture stays plain at any scale, and its edges lie where they belong.
TEST(ScaledRenderer, ShowsLayersInTheirPlacesAtAnyScale) {
    auto const plain = std::make_shared<Picture const>(paint({200, 101}, [](int, int) {
        return Colour{9, 99, 199, 255};
    }));
    for (double const scale : {0.9, 0.5, 0.37, 0.25, 0.1, 0.02}) {
        Area const area{0, 0, int(400 * scale), int(300 * scale)};
        Picture const shown = render({{plain, 100, 50}}, scale, area);
        for (int y = 0; y < area.height; ++y)
            for (int x = 0; x < area.width; ++x) {
                double const canvasX = (x + 0.5) / scale, canvasY = (y + 0.5) / scale;
                bool const isInside = canvasX >= 100 && canvasX < 300 && canvasY >= 50 && canvasY < 151;
                Colour const expected = isInside ? Colour{9, 99, 199, 255} : Colour{0, 0, 0, 0};
                ASSERT_EQ(expected, shown.row(y)[static_cast<std::size_t>(x)]) << scale << ": " << x << ", " << y;
            }
    }
}

TEST(ReducedPictures, TakeTheMeanOfLightAndForgetPicturesThatAreGone) {
    ReducedPictures reduced;
    auto checker = std::make_shared<Picture const>(paint({5, 4}, [](int x, int y) {
        return (x + y) % 2 ? Colour{255, 255, 255, 255} : Colour{0, 0, 0, 255};
    }));
    SharedPicture const half = reduced.get(checker, 1);
    EXPECT_EQ((Size{3, 2}), half->size());
    EXPECT_EQ((Colour{188, 188, 188, 255}), half->row(0)[0]) << "half of the light";
    EXPECT_EQ((Size{1, 1}), reduced.get(checker, 3)->size());
    EXPECT_EQ(half, reduced.get(checker, 1)) << "made once";
    EXPECT_TRUE(reduced.isOpaque(checker));
    checker = std::make_shared<Picture const>(Size{5, 4});
    EXPECT_FALSE(reduced.isOpaque(checker));
    EXPECT_EQ(1, half.use_count()) << "the other one is forgotten";
}

} // namespace
