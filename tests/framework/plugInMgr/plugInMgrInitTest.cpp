#include "framework/plugInMgr/plugInMgrInit.h"
#include "base/inInitMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "tests/fixtures/plugIns/plugInJournal.h"
#include "tests/support/childProcess.h"
#include "tests/support/commandLine.h"
#include "tests/support/logRecorder.h"
#include "tests/support/messageRecorder.h"
#include "tests/support/plugInFolder.h"
#include "variables.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

using Names = std::vector<std::string>;

// Calls `body` while the framework is initialised with a command line.
template <class Body>
void whileStarted(Names arguments, Body body) {
    CommandLine line(std::move(arguments));
    int argc = line.argc();
    InInitScope const scope(argc, line.argv());
    EXPECT_EQ(1, argc) << "the settings are taken out";
    body();
}

// The plug-in directories, without `folder` before them.
Names directoriesBelow(PlugInFolder const& folder) {
    Names result;
    for (OsFilePath const& directory : PimUtils::getFilePaths())
        result.push_back(directory.getPath().substr((folder / "").string().size()));
    return result;
}

struct Directories {
    // "@" stands for the installation directory, which contains "one", "two", "file" and the current directory "current".
    char const* list;
    Names expected;
    Names warnings;
};

TEST(PlugInMgrPackage, TakesThoseDirectoriesOfTheListThatExist) {
    for (Directories const& row : {Directories{nullptr, {"plugins"}, {}}, Directories{"", {}, {}},
             Directories{"::@/two::@/one:@/two/:", {"two", "one", "two"}, {}},
             Directories{"../file:@/one:missing:", {"one"},
                 {"MSG_PLUGIN_PATH_ERROR: ../file", "MSG_PLUGIN_DIRECTORY_ERROR: missing"}},
             Directories{"one:here:./here/.:../two", {"current/here", "current/here", "current/../two"},
                 {"MSG_PLUGIN_DIRECTORY_ERROR: one"}},
             Directories{".", {"current"}, {}}})
        inChildProcess([&row] {
            PlugInFolder const folder;
            for (char const* const file : {"one/x", "two/x", "file", "current/here/x"})
                folder.write(file, "");
            std::filesystem::current_path(folder / "current");
            KoTest::setVariable("KO_INSTALL_DIR", (folder / "").string());
            std::string list = row.list ? row.list : "";
            for (auto at = list.find('@'); at != std::string::npos; at = list.find('@'))
                list.replace(at, 1, folder.path().getPath());
            if (row.list) KoTest::setVariable("KO_PLUGINS_DIR", list);
            MessageRecorder const messages;
            whileStarted({}, [&] {
                std::filesystem::current_path("/");
                EXPECT_EQ(row.expected, directoriesBelow(folder));
                // Without a catalogue, messages show their identifiers.
                EXPECT_EQ(row.warnings, messages.texts());
            });
        });
}

TEST(PlugInMgrPackage, TakesDirectoriesFromTheCommandLineAndWarnsInWords) {
    inChildProcess([] {
        PlugInFolder const folder;
        folder.write("file", "");
        KoTest::setVariable("KO_PLUGINS_DIR", "/not this one");
        MessageRecorder const messages;
        whileStarted({"plugins:" + folder.path().getPath() + ":/no/such:" + folder.path("file").getPath()},
            [&] { EXPECT_EQ((Vector<OsFilePath>{folder.path()}), PimUtils::getFilePaths()); });
        ASSERT_EQ(2u, messages.texts().size());
        EXPECT_TRUE(messages.texts()[0].starts_with("The plug-in directory \"/no/such\" does not exist"));
        EXPECT_EQ("The plug-in directory \"" + folder.path("file").getPath() + "\" is not a directory and is ignored.",
            messages.texts()[1]);
    });
}

struct Rules {
    std::string include;
    std::string exclude;
    Names left;
};

// Further rules, compared with a model: tests/fuzz/plugInSettingsFuzz.cpp.
TEST(PlugInMgrPackage, DecidesByItsRulesWhatIsLoaded) {
    Names const all = {".io" KO_SUFFIX, "ajpx.io" KO_SUFFIX, "big.jp.io" KO_SUFFIX, "io" KO_SUFFIX, "jpeg.io" KO_SUFFIX,
        "jpeg.render" KO_SUFFIX, "tiff.io" KO_SUFFIX};
    for (Rules const& row : {Rules{"", "", all},
             Rules{"io=jp", "",
                 {"ajpx.io" KO_SUFFIX, "big.jp.io" KO_SUFFIX, "io" KO_SUFFIX, "jpeg.io" KO_SUFFIX,
                     "jpeg.render" KO_SUFFIX}},
             Rules{"io=tif,,io=peg,gen=noise", "",
                 {"io" KO_SUFFIX, "jpeg.io" KO_SUFFIX, "jpeg.render" KO_SUFFIX, "tiff.io" KO_SUFFIX}},
             Rules{"io=all,io=nothing", "", all}, Rules{"io=JPEG", "", {"io" KO_SUFFIX, "jpeg.render" KO_SUFFIX}},
             Rules{"io=,io,,=", "io,render=, io=jp,.io=all,io=jp=eg", all},
             Rules{"io=all", "io=all,render=all", {"io" KO_SUFFIX}},
             Rules{"io=jp", "io=big,io=tiff",
                 {"ajpx.io" KO_SUFFIX, "io" KO_SUFFIX, "jpeg.io" KO_SUFFIX, "jpeg.render" KO_SUFFIX}}})
        inChildProcess([&row, &all] {
            PlugInFolder const folder;
            for (std::string const& name : all)
                folder.add(name, "blur.op" KO_SUFFIX);
            Names arguments;
            if (!row.include.empty()) arguments.push_back("plugins_include:" + row.include);
            if (!row.exclude.empty()) arguments.push_back("plugins_exclude:" + row.exclude);
            class : public PimUtils::Callback {
            public:
                void notifyLoading(OsFilePath const& path) override { names.push_back(path.getFileName().getPath()); }
                Names names;
            } loaded;
            whileStarted(arguments, [&] {
                int const count =
                    PimUtils::loadWildcard(folder.path(), "*" KO_SUFFIX, InInitMgr::Reinitialization, loaded);
                EXPECT_EQ(static_cast<int>(row.left.size()), count);
            });
            EXPECT_EQ(row.left, loaded.names) << row.include << " without " << row.exclude;
        });
}

struct HostTag {};

// A host that loads its plug-ins within its own start.
class HostInit final : public InInit<HostTag> {
public:
    explicit HostInit(OsFilePath plugIns)
        : InInit("host", packagesOf<KoInit::plugInMgr>()), _plugIns(std::move(plugIns)) {}
    void initialize() override {
        EXPECT_EQ(2, PimUtils::loadType(_plugIns, "op", InInitMgr::Recursive, PimUtils::getNullCb()));
    }

private:
    OsFilePath _plugIns;
};

TEST(PlugInMgrPackage, StartsWithoutAPlugInWhosePostInitialiseHookFails) {
    inChildProcess([] {
        PlugInFolder const folder;
        std::string const path = folder.add("blur.op" KO_SUFFIX).getPath();
        folder.add("grade.op" KO_SUFFIX);
        plugInActions()["*blur"] = [] { throw std::runtime_error("no licence"); };
        HostInit host(folder.path());
        MessageRecorder const messages;
        LogRecorder const log;
        whileStarted({}, [&] {
            EXPECT_EQ((Names{"+blur", "+grade", "*blur", "-blur", "*grade"}), plugInJournal());
            std::string const reason = "Package \"blur\" could not be initialised: no licence";
            EXPECT_EQ((Names{"The plug-in \"" + path + "\" could not be initialised and is ignored: " + reason}),
                messages.texts());
            EXPECT_EQ((Names{"PlugInMgr:2 [PlugInMgr] Error while attempting to init plugin '" + path + "':\n" +
                             reason + "\nPlugin ignored."}),
                log.lines());
            auto const report = PimUtils::getReport().plugIns;
            ASSERT_EQ(2u, report.size());
            EXPECT_TRUE(report[0].stage == PimStage::Failed && report[1].stage == PimStage::Loaded);
            EXPECT_EQ(reason, report[0].reason);
        });
    });
}

} // namespace
