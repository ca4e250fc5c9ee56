#include "image/atomicFile.h"
#include "image/colour.h"
#include "image/pngFile.h"
#include "image/render.h"
#include "tests/examples/compositor/pictures.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"

#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>

namespace {

using namespace compositor;
using namespace KoTest;

double toLight(double srgb) {
    return srgb <= 0.04045 ? srgb / 12.92 : std::pow((srgb + 0.055) / 1.055, 2.4);
}
double toSrgb(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

TEST(Colour, EncodesToTheNearestValueAndBack) {
    for (int value = 0; value < 256; ++value)
        EXPECT_EQ(value, encodeSrgb(decodeSrgb(static_cast<std::uint8_t>(value))));
    for (int step = 0; step <= 100000; ++step) {
        double const light = step / 100000.0;
        EXPECT_NEAR(toSrgb(static_cast<float>(light)) * 255.0, encodeSrgb(static_cast<float>(light)), 0.5001);
    }
    EXPECT_EQ(0, encodeSrgb(-1.0f));
    EXPECT_EQ(0, encodeSrgb(std::nanf("")));
    EXPECT_EQ(255, encodeSrgb(7.0f));
}

TEST(Picture, RefusesImpossibleSizes) {
    for (Size const size : {Size{0, 1}, Size{1, -1}, Size{65536, 1}, Size{65535, 65535}})
        EXPECT_THROW(Picture{size}, ImageError);
}

// The formulas as they are written down, in double, for one channel.
double reference(BlendMode mode, double source, double destination, double sourceAlpha, double destinationAlpha) {
    if (mode == BlendMode::Over) return source + destination * (1 - sourceAlpha);
    if (mode == BlendMode::Add) return std::min(1.0, source + destination);
    if (mode == BlendMode::Screen) return source + destination - source * destination;
    return source * destination + source * (1 - destinationAlpha) + destination * (1 - sourceAlpha);
}

int expectedChannel(BlendMode mode, Colour above, double opacity, Colour below, std::uint8_t Colour::*channel) {
    double const sourceAlpha = above.alpha / 255.0 * opacity;
    double const destinationAlpha = below.alpha / 255.0;
    double const alpha = reference(mode, sourceAlpha, destinationAlpha, sourceAlpha, destinationAlpha);
    double const light = reference(mode, toLight(above.*channel / 255.0) * sourceAlpha,
        toLight(below.*channel / 255.0) * destinationAlpha, sourceAlpha, destinationAlpha);
    return alpha <= 0 ? 0 : static_cast<int>(std::lround(toSrgb(std::min(1.0, light / alpha)) * 255));
}

TEST(Renderer, BlendsAsTheFormulasSay) {
    std::mt19937 random(5);
    auto const byte = [&random] { return static_cast<std::uint8_t>(random() % 6 * 51); };
    for (BlendMode const mode : {BlendMode::Over, BlendMode::Add, BlendMode::Multiply, BlendMode::Screen})
        for (int round = 0; round < 500; ++round) {
            Colour const below{byte(), byte(), byte(), byte()};
            Colour const above{byte(), byte(), byte(), byte()};
            float const opacity = static_cast<float>(random() % 5) / 4;
            auto const picture = [](Colour colour) {
                return std::make_shared<Picture const>(paint({1, 1}, [&](int, int) { return colour; }));
            };
            Renderer const renderer(
                {1, 1}, {{picture(below), 0, 0, 1.0f, BlendMode::Over}, {picture(above), 0, 0, opacity, mode}});
            std::vector<Colour> row(1);
            renderer.renderRow(0, 0, row);
            for (auto const channel : {&Colour::red, &Colour::green, &Colour::blue})
                EXPECT_NEAR(expectedChannel(mode, above, opacity, below, channel), row[0].*channel, 1)
                    << toString(mode);
        }
    EXPECT_THROW(blendModeOf("dissolve"), ImageError);
}

TEST(Renderer, ClipsLayersThatLieAnywhere) {
    Colour const red{255, 0, 0, 255};
    auto const picture = std::make_shared<Picture const>(paint({3, 3}, [&](int, int) { return red; }));
    constexpr int far = 2147483647;
    for (auto const& [left, top, expected] :
        std::vector<std::tuple<int, int, char const*>>{{-2, -2, "x...|....|"}, {1, -1, ".xxx|.xxx|"},
            {2, 1, "....|..xx|"}, {4, 0, "....|....|"}, {far, far, "....|....|"}, {-far, -far, "....|....|"}}) {
        Renderer const renderer({4, 2}, {{picture, left, top, 1.0f, BlendMode::Over}});
        std::string shown;
        for (int y = 0; y < 2; ++y) {
            std::vector<Colour> pixels(4);
            renderer.renderRow(0, y, pixels);
            for (Colour const pixel : pixels)
                shown += pixel == red ? 'x' : '.';
            shown += '|';
        }
        EXPECT_EQ(expected, shown) << left << ", " << top;
    }
}

TEST(PngFile, KeepsEveryPixelAndReportsDamageOfAnyKind) {
    std::mt19937 random(3);
    auto const byte = [&random] { return static_cast<std::uint8_t>(random() >> 24); };
    Picture const picture = paint({33, 17}, [&](int, int) { return Colour{byte(), byte(), byte(), byte()}; });
    std::vector<std::byte> const bytes = encodePng(picture);
    EXPECT_EQ(picture, decodePng(bytes));
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        EXPECT_THROW(decodePng(std::span(bytes).first(place)), ImageError) << "cut at " << place;
        std::vector<std::byte> damaged = bytes;
        damaged[place] ^= std::byte{0x40};
        EXPECT_THROW(decodePng(damaged), ImageError) << "damaged at " << place;
    }
}

TEST(Writing, IsWholeOrNotAtAll) {
    TemporaryFolder const folder;
    folder.write("old.png", "old");
    Renderer const renderer({8, 300}, {});
    EXPECT_FALSE(renderer.renderToFile(folder / "old.png", [](int done, int) { return done < 4; }));
    EXPECT_THROW(writePng(folder / "old.png", {8, 8}, [](int, std::span<Colour>) -> bool { throw ImageError("x"); }),
        ImageError);
    EXPECT_EQ("old", folder.read("old.png"));
    EXPECT_EQ(1, folder.entries());
    EXPECT_TRUE(renderer.renderToFile(folder / "old.png"));
    EXPECT_EQ((Size{8, 300}), decodePng(readFile(folder / "old.png")).size());
    EXPECT_EQ(1, folder.entries());
}

TEST(Writing, ToADiskThatIsFullTellsTheReasonAndLeavesNothing) {
    inChildProcess([] {
        TemporaryFolder const folder;
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit const full{4096, RLIM_INFINITY};
        ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &full));
        std::mt19937 random(1);
        auto const noise = [&](int, std::span<Colour> row) {
            for (Colour& colour : row)
                colour.red = static_cast<std::uint8_t>(random() >> 24);
            return true;
        };
        std::string const path = (folder / "x.png").string();
        EXPECT_EQ(path + " cannot be written: File too large", errorOf([&] { writePng(path, {500, 500}, noise); }));
        EXPECT_EQ(0, folder.entries());
    });
}

TEST(Files, ThatCannotBeUsedAreNamedWithTheReason) {
    TemporaryFolder const folder;
    EXPECT_NE(std::string::npos, errorOf([&] { readFile(folder / ""); }).find("it is a directory"));
    EXPECT_EQ("/dev/null cannot be written: it is not a file", errorOf([] { AtomicFile("/dev/null"); }));
}

} // namespace
