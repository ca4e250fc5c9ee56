#include "tests/examples/compositor/pictures.h"
#include "tests/examples/compositor/session.h"
#include "tests/support/temporaryFolder.h"

namespace {

using namespace compositor;
using namespace KoTest;
using testing::HasSubstr;

class PlugInsTest : public Session {
protected:
    void add(Picture picture, std::string const& name = "a") { editor.addLayer(name, std::move(picture)); }
    // The pixels of a layer one pixel high.
    std::vector<Colour> pixels(std::string const& name = "a") const {
        auto const row = editor.document().layer(name).placed.picture->row(0);
        return {row.begin(), row.end()};
    }
};

constexpr Colour black{0, 0, 0, 255};
constexpr Colour white{255, 255, 255, 255};

TEST_F(PlugInsTest, GeneratorsMakeLayers) {
    EXPECT_TRUE(run("checker c 5 1 2 000000 ffffff\ngradient g 3 1 000000ff ffffff00\n"
                    "gradient v 1 3 000000 ffffff vertical\ngradient p 1 1 102030 000000\n"
                    "do \"Add Noise\" n 9 1 7\ndo \"Add Noise\" m 9 1 7\ndo \"Add Noise\" o 9 1 8"))
        << errors.str();
    EXPECT_EQ((std::vector<Colour>{black, black, white, white, black}), pixels("c"));
    EXPECT_EQ((std::vector<Colour>{black, {128, 128, 128, 128}, {255, 255, 255, 0}}), pixels("g"));
    EXPECT_EQ((std::vector<Colour>{black}), pixels("v"));
    EXPECT_EQ((std::vector<Colour>{{0x10, 0x20, 0x30, 255}}), pixels("p"));
    EXPECT_EQ(pixels("n"), pixels("m"));
    EXPECT_NE(pixels("n"), pixels("o"));
}

TEST_F(PlugInsTest, OperatorsMakeOtherPicturesInOneStepThatCanBeUndone) {
    std::vector<Colour> const before{{10, 20, 30, 40}, {200, 100, 50, 255}, {0, 0, 0, 0}};
    add(paint({3, 1}, [&](int x, int) { return before[static_cast<std::size_t>(x)]; }));
    run("select a");
    for (auto const& [action, expected] : std::vector<std::pair<char const*, std::vector<Colour>>>{
             {"Invert", {{245, 235, 225, 40}, {55, 155, 205, 255}, {255, 255, 255, 0}}}, {"Grade 1 1", before},
             {"Grade 0 1", {{0, 0, 0, 40}, black, {0, 0, 0, 0}}},
             {"Grade 1 1 0", {{19, 19, 19, 40}, {128, 128, 128, 255}, {0, 0, 0, 0}}},
             {"Transform mirror", {before[2], before[1], before[0]}}, {"Transform flip", before},
             {"Transform turn", {before[2], before[1], before[0]}}, {"Transform left", {before[2]}},
             {"Transform right", {before[0]}}, {"Transform scale 0.333", {before[1]}},
             {"Transform scale 2", {before[0], before[0], before[1], before[1], before[2], before[2]}},
             {"Blur 0", {before[0], before[1], {0, 0, 0, 0}}}}) {
        EXPECT_TRUE(run(std::string("do ") + action)) << errors.str();
        EXPECT_EQ(expected, pixels()) << action;
        run("undo");
        EXPECT_EQ(before, pixels()) << action;
    }
}

TEST_F(PlugInsTest, ABlurSpreadsLightAndKeepsPlainColours) {
    add(paint({41, 1}, [](int x, int) { return x == 20 ? white : black; }));
    run("select a\ndo Blur 3");
    auto const blurred = pixels();
    EXPECT_EQ(black, blurred[10]);
    EXPECT_EQ(black, blurred[30]);
    EXPECT_TRUE(std::is_sorted(
        blurred.begin(), blurred.begin() + 21, [](Colour left, Colour right) { return left.green < right.green; }));
    for (int x = 0; x <= 20; ++x)
        EXPECT_NEAR(blurred[static_cast<std::size_t>(x)].green, blurred[static_cast<std::size_t>(40 - x)].green, 1);
    std::vector<Colour> const plain(5, Colour{250, 7, 0, 90});
    add(paint({5, 4}, [&](int, int) { return plain[0]; }), "b");
    run("select b\ndo Blur 2");
    EXPECT_EQ(plain, pixels("b"));
}

TEST_F(PlugInsTest, RefuseBadArgumentsAndLeaveTheLayer) {
    add(paint({3, 1}, [](int, int) { return white; }));
    for (auto const& [script, error] :
        std::vector<std::pair<char const*, char const*>>{{"do Blur", "\"Blur\" takes a radius in pixels"},
            {"do Blur -1", "\"-1\" is not a whole number from 0 to 1000"}, {"do Transform scale 1000", ""},
            {"do Transform scale", "write mirror, flip"}, {"do Transform sideways", "not \"sideways\""},
            {"do Grade 1 0", "\"0\" is not a number from 0.01 to 100"},
            {"do Grade 1", "\"Grade\" takes a gain, a gamma and perhaps a saturation"},
            {"select\ndo \"Add Noise\" n 1", "\"Add Noise\" takes a name, a width, a height, a seed"},
            {"checker c 1 1 1 black ffffff", "\"black\" is not a colour"},
            {"gradient c 1 1 000000 ffffff up", "\"up\" is not a direction"}}) {
        errors.str("");
        EXPECT_EQ(*error == '\0', run("select a\n" + std::string(script))) << script;
        EXPECT_THAT(errors.str(), HasSubstr(error)) << script;
        EXPECT_EQ(1u, editor.document().layers().size());
    }
}

TEST(PlugInsOfAHost, AreShownInATableWithTheReasonsOfThoseThatAreNotLoaded) {
    TemporaryFolder const folder;
    std::string const program = KO_COMPOSITOR, output = folder / "output";
    std::filesystem::path const home = std::filesystem::path(program).parent_path().parent_path();
    std::string const plugIns = (home / "plugins").string(), more = (folder / "more").string();
    std::string const bad = folder.write("more/bad.op" KO_SUFFIX, "not a library").string();
    folder.write("more/empty.gen" KO_SUFFIX, "");
    std::filesystem::copy_file(home / "plugins/invert.op" KO_SUFFIX, folder / "more/invert.op" KO_SUFFIX);
    std::filesystem::copy_file(home / "refusedPlugins/sharpen.op" KO_SUFFIX, folder / "more/sharpen.op" KO_SUFFIX);
    std::string const script = folder.write("script.kos", "plugins\ndo \"Add Noise\" n 1 1 1\n").string();
    auto const run = [&](std::string const& argument) {
        std::string const command = "KO_PLUGINS_EXCLUDE=op=grade '" + program + "' 'plugins:" + plugIns + ":" + more +
                                    "' " + argument + " >'" + output + "' 2>&1";
        EXPECT_EQ(0, std::system(command.c_str()));
        return folder.read("output");
    };
    std::string const warned = run("'" + script + "'"), table = run("--plugins");
    EXPECT_EQ(0u, warned.find("The plug-in \"" + bad + "\" could not be loaded and is ignored: ")) << warned;
    EXPECT_THAT(warned, testing::EndsWith(table)) << "the script writes the same table, after the warnings";
    EXPECT_EQ(0u,
        table.find(plugIns + "\n  file             type  name       version  interface                      state\n"))
        << table;
    std::string const interface = "framework 8.0, compositor ";
    for (std::string const& line :
        std::vector<std::string>{"\n  grade.op" KO_SUFFIX "      op    -          -        -          "
                                 "                    not loaded: is filtered out.\n",
            "\n  noise.gen" KO_SUFFIX "     gen   noise      8.0.0    " + interface + "1.0  loaded\n",
            "\n" + more + "\n  file",
            "\n  bad.op" KO_SUFFIX "      op    -        -        -                              failed: " + bad +
                ": file too short\n",
            "\n  invert.op" KO_SUFFIX
            "   op    -        -        -                              not loaded: has the file name "
            "of " +
                plugIns + "/invert.op" KO_SUFFIX ", which was loaded before.\n",
            "\n  sharpen.op" KO_SUFFIX "  op    sharpen  8.0.0    " + interface +
                "2.0  refused: it was built for compositor 2.0, and this application offers compositor 1.0\n",
            "\n  empty.gen" KO_SUFFIX "   gen   -        -        -                              not loaded: is a "
            "directory or empty.\n"})
        EXPECT_THAT(table, HasSubstr(line));
}

} // namespace
