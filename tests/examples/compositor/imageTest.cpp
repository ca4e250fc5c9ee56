#include "image/atomicFile.h"
#include "image/colour.h"
#include "image/inputFile.h"
#include "image/pngFile.h"
#include "image/render.h"
#include "tests/examples/compositor/pictures.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
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

// The formulas of the blend modes for one channel, in double.
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
    EXPECT_THROW(static_cast<void>(blendModeOf("dissolve")), ImageError);
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

// One kind of PNG file, and its rows of packed samples.
struct Stored {
    int colourType;
    int depth;
    bool hasTransparency = false;
    Size size{11, 9};
    std::vector<std::vector<png_byte>> rows{};

    unsigned channels() const {
        unsigned const colours = colourType == PNG_COLOR_TYPE_PALETTE || !(colourType & PNG_COLOR_MASK_COLOR) ? 1 : 3;
        return colours + (colourType & PNG_COLOR_MASK_ALPHA ? 1 : 0);
    }
    void fill(std::mt19937& random) {
        std::size_t const bits = channels() * static_cast<unsigned>(depth) * static_cast<unsigned>(size.width);
        rows.assign(static_cast<std::size_t>(size.height), std::vector<png_byte>((bits + 7) / 8));
        for (auto& row : rows)
            std::ranges::generate(row, [&] { return static_cast<png_byte>(random() >> 24); });
    }
    unsigned sample(int x, int y, unsigned channel) const {
        std::size_t const index = static_cast<std::size_t>(x) * channels() + channel;
        auto const& row = rows[static_cast<std::size_t>(y)];
        if (depth == 16) return row[2 * index] * 256u + row[2 * index + 1];
        auto const bits = static_cast<unsigned>(depth);
        std::size_t const bit = index * bits;
        return row[bit / 8] >> (8 - bits - bit % 8) & ((1u << bits) - 1);
    }
    static Colour paletteEntry(unsigned index) {
        auto const byte = [](unsigned value) { return static_cast<std::uint8_t>(value); };
        return {byte(index * 3), byte(255 - index), byte(index * 7), byte(index * 11)};
    }
    // The pixel in 8 bits, as PNG defines it.
    Colour pixel(int x, int y) const {
        if (colourType == PNG_COLOR_TYPE_PALETTE) {
            Colour colour = paletteEntry(sample(x, y, 0));
            if (!hasTransparency) colour.alpha = 255;
            return colour;
        }
        auto const scaled = [&](unsigned channel) {
            unsigned const largest = (1u << depth) - 1;
            return static_cast<std::uint8_t>((sample(x, y, channel) * 255u + largest / 2) / largest);
        };
        bool const isColour = colourType & PNG_COLOR_MASK_COLOR;
        Colour colour{scaled(0), scaled(isColour ? 1 : 0), scaled(isColour ? 2 : 0)};
        if (colourType & PNG_COLOR_MASK_ALPHA) colour.alpha = scaled(channels() - 1);
        if (hasTransparency && isLikeFirst(x, y)) colour.alpha = 0;
        return colour;
    }
    // The first pixel's colour is the transparent one.
    bool isLikeFirst(int x, int y) const {
        bool isLike = true;
        for (unsigned channel = 0; channel < channels(); ++channel)
            isLike = isLike && sample(x, y, channel) == sample(0, 0, channel);
        return isLike;
    }
    std::string file(int interlacing) const {
        std::string bytes;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(
            png, &bytes,
            [](png_structp stream, png_bytep data, std::size_t count) {
                static_cast<std::string*>(png_get_io_ptr(stream))->append(reinterpret_cast<char*>(data), count);
            },
            nullptr);
        png_set_IHDR(png, info, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), depth,
            colourType, interlacing, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        setColours(png, info);
        png_write_info(png, info);
        std::vector<png_bytep> pointers;
        for (auto const& row : rows)
            pointers.push_back(const_cast<png_bytep>(row.data()));
        png_write_image(png, pointers.data());
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        return bytes;
    }
    void setColours(png_structp png, png_infop info) const {
        std::vector<png_color> palette;
        std::vector<png_byte> alphas;
        for (unsigned index = 0; index < 1u << std::min(depth, 8); ++index) {
            Colour const colour = paletteEntry(index);
            palette.push_back({colour.red, colour.green, colour.blue});
            alphas.push_back(colour.alpha);
        }
        if (colourType == PNG_COLOR_TYPE_PALETTE)
            png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
        auto const first = [this](unsigned channel) {
            return static_cast<png_uint_16>(channel < channels() ? sample(0, 0, channel) : 0);
        };
        png_color_16 const transparent{0, first(0), first(1), first(2), first(0)};
        if (hasTransparency) png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), &transparent);
    }
};

TEST(PngFile, OfEveryKindIsReadAsItsFormatSays) {
    constexpr int grey = PNG_COLOR_TYPE_GRAY, palette = PNG_COLOR_TYPE_PALETTE, rgb = PNG_COLOR_TYPE_RGB;
    std::mt19937 random(7);
    for (Stored stored : std::vector<Stored>{{grey, 1}, {grey, 2, true}, {grey, 4}, {grey, 8, true}, {grey, 16},
             {grey, 16, true}, {palette, 1, true}, {palette, 2}, {palette, 4, true}, {palette, 8, true}, {rgb, 8, true},
             {rgb, 16}, {rgb, 16, true}, {PNG_COLOR_TYPE_GRAY_ALPHA, 8}, {PNG_COLOR_TYPE_GRAY_ALPHA, 16},
             {PNG_COLOR_TYPE_RGBA, 8}, {PNG_COLOR_TYPE_RGBA, 16}})
        for (int const interlacing : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
            stored.fill(random);
            EXPECT_TRUE(paint(stored.size, [&](int x, int y) { return stored.pixel(x, y); }) ==
                        decode(stored.file(interlacing)))
                << "type " << stored.colourType << ", depth " << stored.depth << ", interlacing " << interlacing;
        }
}

TEST(PngFile, KeepsEveryPixelAndReportsDamageOfAnyKind) {
    std::mt19937 random(3);
    auto const byte = [&random] { return static_cast<std::uint8_t>(random() >> 24); };
    Picture const picture = paint({33, 17}, [&](int, int) { return Colour{byte(), byte(), byte(), byte()}; });
    std::string const bytes = encode(picture);
    EXPECT_EQ(picture, decode(bytes));
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        EXPECT_THROW(decode(bytes.substr(0, place)), ImageError) << "cut at " << place;
        std::string damaged = bytes;
        damaged[place] ^= '\x40';
        EXPECT_THROW(decode(damaged), ImageError) << "damaged at " << place;
    }
    EXPECT_EQ("the PNG picture is cut off: it is too short for 65535 x 4000 pixels",
        messageOf([] { decode(hugePicture()); }));
    // A sink that refuses its bytes, at once or later: the sanitizer finds what is left then.
    for (int accepted : {0, 1, 5})
        EXPECT_THROW(writePng(picture,
                         [&](std::span<std::byte const>) {
                             if (accepted-- == 0) throw ImageError("full");
                         }),
            ImageError);
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
    EXPECT_EQ((Size{8, 300}), readPicture(folder / "old.png").size());
    EXPECT_EQ(1, folder.entries());
}

TEST(Writing, KeepsPermissionsFollowsLinksAndLeavesNothing) {
    TemporaryFolder const folder;
    auto const write = [&](std::string const& name) {
        EXPECT_TRUE(Renderer({8, 8}, {}).renderToFile(folder / name)) << name;
    };
    folder.write("real/old.png", "old");
    std::filesystem::permissions(folder / "real/old.png", std::filesystem::perms(0640));
    std::filesystem::create_symlink("real/old.png", folder / "link.png");
    std::filesystem::create_symlink(folder / "real/new.png", folder / "leadsNowhere.png");
    for (int number = 0; number < 100; ++number)
        folder.write("real/old.png.part" + std::to_string(number), "of a process that was killed");
    write("link.png");
    write("leadsNowhere.png");
    EXPECT_EQ(2, folder.entries() - 1) << "only the links";
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_EQ((Size{8, 8}), readPicture(folder / "real/old.png").size());
    EXPECT_EQ((Size{8, 8}), readPicture(folder / "real/new.png").size());
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(folder / "real/old.png").permissions());
    EXPECT_EXIT(
        {
            AtomicFile file(folder / "killed.png");
            file.write(std::as_bytes(std::span("begun")));
            std::raise(SIGKILL);
        },
        testing::KilledBySignal(SIGKILL), "");
    EXPECT_EQ(3, folder.entries());
}

TEST(Writing, ToAFullDiskReportsTheReasonAndLeavesNothing) {
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
        EXPECT_EQ(path + " cannot be written: File too large", messageOf([&] { writePng(path, {500, 500}, noise); }));
        EXPECT_EQ(0, folder.entries());
    });
}

TEST(Files, ThatCannotBeOpenedAreReportedWithTheReason) {
    TemporaryFolder const folder;
    std::string const seen = folder.write("x", "").string(), cut = seen + std::string("\0.png", 5);
    EXPECT_THAT(messageOf([&] { InputFile(folder / ""); }), testing::HasSubstr("it is a directory"));
    EXPECT_EQ("/dev/null cannot be written: it is not a file", messageOf([] { AtomicFile("/dev/null"); }));
    EXPECT_EQ(seen + " cannot be read: its name contains a zero byte", messageOf([&] { InputFile{cut}; }));
    EXPECT_EQ(seen + " cannot be written: its name contains a zero byte", messageOf([&] { AtomicFile{cut}; }));
}

} // namespace
