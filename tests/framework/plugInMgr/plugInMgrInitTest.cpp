#include "framework/plugInMgr/plugInMgrInit.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "tests/fixtures/plugIns/plugInJournal.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/messageRecorder.h"
#include "tests/support/plugInFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

using Names = std::vector<std::string>;

// Starts the framework with a command line and ends it with the scope.
class Started {
public:
    explicit Started(Names arguments) : _arguments(std::move(arguments)) {
        _arguments.insert(_arguments.begin(), "program");
        for (std::string& argument : _arguments)
            _argv.push_back(argument.data());
        _argv.push_back(nullptr);
        int argc = static_cast<int>(_arguments.size());
        InInitMgr::initialize(argc, _argv.data());
        EXPECT_EQ(1, argc) << "the settings are taken out";
    }
    ~Started() { InInitMgr::finalize(); }
    Started(Started const&) = delete;
    Started& operator=(Started const&) = delete;

private:
    Names _arguments;
    std::vector<char*> _argv;
};

// The plug-in directories, without `folder` before them.
Names directoriesBelow(PlugInFolder const& folder) {
    Names result;
    for (OsFilePath const& directory : PimUtils::getFilePaths())
        result.push_back(std::filesystem::path(directory.getPath()).lexically_relative(folder / "").string());
    return result;
}

struct Directories {
    char const* name;
    // "@" stands for the folder that has "one", "two" and "file" in it, and is the installation directory.
    char const* list;
    Names expected;
    Names warnings;
};

class PlugInDirectories : public testing::TestWithParam<Directories> {};

TEST_P(PlugInDirectories, AreThoseOfTheListThatExist) {
    inChildProcess([] {
        PlugInFolder const folder;
        for (char const* const file : {"one/x", "two/x", "file", "current/here/x"})
            folder.write(file, "");
        std::filesystem::current_path(folder / "current");
        ::setenv("KO_INSTALL_DIR", (folder / "").c_str(), 1);
        std::string list = GetParam().list ? GetParam().list : "";
        for (auto at = list.find('@'); at != std::string::npos; at = list.find('@'))
            list.replace(at, 1, folder.path().getPath());
        if (GetParam().list) ::setenv("KO_PLUGINS_DIR", list.c_str(), 1);
        MessageRecorder const messages;
        Started const started({});
        EXPECT_EQ(GetParam().expected, directoriesBelow(folder));
        // No catalogue is there, so that messages show their names.
        EXPECT_EQ(GetParam().warnings, messages.texts());
    });
}

INSTANTIATE_TEST_SUITE_P(Table, PlugInDirectories,
    testing::Values(Directories{"unset", nullptr, {"plugins"}, {}}, Directories{"empty", "", {}, {}},
        Directories{"emptyPieces", "::@/two::@/one:@/two/:", {"two", "one", "two"}, {}},
        Directories{"bad", "file:@/one:missing:", {"one"},
            {"MSG_PLUGIN_PATH_ERROR: file", "MSG_PLUGIN_DIRECTORY_ERROR: missing"}},
        Directories{"relative", "one:here:./two", {"one", "./two"}, {"MSG_PLUGIN_DIRECTORY_ERROR: here"}},
        Directories{"dot", ".", {"."}, {}}),
    [](auto const& row) { return row.param.name; });

TEST(PlugInMgrPackage, TakesDirectoriesFromTheCommandLineAndWarnsInWords) {
    inChildProcess([] {
        PlugInFolder const folder;
        folder.write("file", "");
        ::setenv("KO_PLUGINS_DIR", "/not this one", 1);
        MessageRecorder const messages;
        Started const started({"plugins:" + folder.path().getPath() + ":/no/such:" + folder.path("file").getPath()});
        EXPECT_EQ((Vector<OsFilePath>{folder.path()}), PimUtils::getFilePaths());
        ASSERT_EQ(2u, messages.texts().size());
        EXPECT_TRUE(messages.texts()[0].starts_with("The plug-in directory \"/no/such\" does not exist"));
        EXPECT_EQ("The plug-in directory \"" + folder.path("file").getPath() + "\" is no directory and is ignored.",
            messages.texts()[1]);
    });
}

struct Rules {
    char const* name;
    std::string include;
    std::string exclude;
    Names expected;
};

class PlugInRules : public testing::TestWithParam<Rules> {};

TEST_P(PlugInRules, DecideWhatIsLoaded) {
    inChildProcess([] {
        PlugInFolder const folder;
        for (char const* const name :
            {"ajpx.io.so", "jpeg.io.so", "tiff.io.so", "jpeg.render.so", "io.so", "big.jp.io.so"})
            folder.add(name, "blur.op.so");
        Names arguments;
        if (!GetParam().include.empty()) arguments.push_back("plugins_include:" + GetParam().include);
        if (!GetParam().exclude.empty()) arguments.push_back("plugins_exclude:" + GetParam().exclude);
        Started const started(arguments);
        class : public PimUtils::Callback {
        public:
            void notifyLoading(OsFilePath const& path) override { names.push_back(path.getFileName().getPath()); }
            Names names;
        } loaded;
        int const count = PimUtils::loadWildcard(folder.path(), "*.so", InInitMgr::Reinitialization, loaded);
        EXPECT_EQ(GetParam().expected, loaded.names);
        EXPECT_EQ(static_cast<int>(loaded.names.size()), count);
    });
}

Names without(Names const& dropped) {
    Names names = {"ajpx.io.so", "big.jp.io.so", "io.so", "jpeg.io.so", "jpeg.render.so", "tiff.io.so"};
    std::erase_if(
        names, [&](auto const& name) { return std::find(dropped.begin(), dropped.end(), name) != dropped.end(); });
    return names;
}

Names const allIo = {"ajpx.io.so", "big.jp.io.so", "jpeg.io.so", "tiff.io.so"};

INSTANTIATE_TEST_SUITE_P(Table, PlugInRules,
    testing::Values(Rules{"none", "", "", without({})}, Rules{"includeFragment", "io=jp", "", without({"tiff.io.so"})},
        Rules{"includeSeveral", "io=tif,io=peg", "", without({"ajpx.io.so", "big.jp.io.so"})},
        Rules{"includeAll", "io=all,io=nothing", "", without({})}, Rules{"includeOther", "gen=noise", "", without({})},
        Rules{"includeNothing", "io=JPEG", "", without(allIo)},
        Rules{"withoutEffect", "io=,io,,=", "io,render=,", without({})},
        Rules{"emptyTokens", ",,io=jpeg,,", "", without({"ajpx.io.so", "big.jp.io.so", "tiff.io.so"})},
        Rules{"excludeFragment", "", "io=jp", without({"ajpx.io.so", "big.jp.io.so", "jpeg.io.so"})},
        Rules{"excludeAll", "io=jp", "io=all,render=all",
            without({"ajpx.io.so", "big.jp.io.so", "jpeg.io.so", "jpeg.render.so", "tiff.io.so"})},
        Rules{"excludeAfterInclude", "io=jp", "io=big,io=tiff", without({"big.jp.io.so", "tiff.io.so"})},
        Rules{"noType", "=x", "io=io", without({"io.so"})}, Rules{"blanksCount", "", "io= jp, io=jp", without({})},
        Rules{"dotsAreNoTypes", "", ".io=all", without({})}, Rules{"secondEquals", "", "io=jp=eg", without({})}),
    [](auto const& row) { return row.param.name; });

TEST(PlugInMgrPackage, HasItsLogGroupForTheLengthOfItsLife) {
    inChildProcess([] {
        PlugInFolder const folder;
        OsFilePath const missing = folder.path("missing.op.so");
        {
            Started const started({});
            LogRecorder const log(5);
            EXPECT_FALSE(PimUtils::load(missing, InInitMgr::Reinitialization));
            EXPECT_EQ(1u, log.lines().size());
        }
        LogRecorder const log(5);
        EXPECT_FALSE(PimUtils::load(missing, InInitMgr::Reinitialization));
        EXPECT_EQ(Names{}, log.lines());
    });
}

} // namespace
