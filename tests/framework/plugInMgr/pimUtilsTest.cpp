#include "framework/plugInMgr/pimUtils.h"
#include "base/assertions.h"
#include "framework/plugInMgr/pimPlugInMgr.h"
#include "resmgt/osFile.h"
#include "tests/support/childProcess.h"
#include "tests/support/plugInTest.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

using Names = std::vector<std::string>;

constexpr InInitMgr::InitType mode = InInitMgr::Reinitialization;

// Records the names of the files that are about to be opened.
class RecordingCallback : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const& path) override {
        EXPECT_FALSE(PimPlugInMgr::getInstance().isLoaded(path)) << path.getPath();
        names.push_back(path.getDirectory().getFileName().getPath() + "/" + path.getFileName().getPath());
    }
    Names names;
};

class PimUtilsTest : public PlugInTest {
protected:
    RecordingCallback callback;
};

TEST_F(PimUtilsTest, LoadsATypeFromAllDirectoriesInOrderAndCountsItAgain) {
    folder.add("one/t2.typed" KO_SUFFIX, "blur.op" KO_SUFFIX);
    folder.add("one/t1.typed" KO_SUFFIX, "grade.op" KO_SUFFIX);
    folder.add("one/t3.other" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    folder.add("two/t4.typed" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    folder.add("two/t1.typed" KO_SUFFIX, "invert.op" KO_SUFFIX); // has the name of another one
    PimUtils::addPiDirectoryPath(folder.path("one"));
    PimUtils::addPiDirectoryPath(folder.path("two"));
    EXPECT_EQ(4, PimUtils::loadType("typed", mode, callback));
    EXPECT_EQ((Names{"one/t1.typed" KO_SUFFIX, "one/t2.typed" KO_SUFFIX, "two/t4.typed" KO_SUFFIX}), callback.names);
    EXPECT_EQ((Names{"+grade", "*grade", "+blur", "*blur", "+noise", "*noise"}), plugInJournal());
    EXPECT_EQ(4, PimUtils::loadType("typed", mode, callback));
    EXPECT_EQ(2, PimUtils::loadType(folder.path("two"), "typed", mode, callback));
    EXPECT_EQ(2, PimUtils::loadWildcard("t?.other*", mode, callback) + PimUtils::loadWildcard("*3*", mode, callback));
    EXPECT_EQ(4u, callback.names.size()) << "no more than t3 was opened";
    EXPECT_EQ(0, PimUtils::loadType("unheard-of", mode, PimUtils::getNullCb()));
}

struct BadPlugIn {
    char const* name;
    char const* fixture; // null stands for a text file
    std::uintmax_t size;
    bool opens;
    char const* words;
};

TEST_F(PimUtilsTest, ReportsAndSkipsBadPlugIns) {
    std::size_t failures = 0;
    for (BadPlugIn const& row :
        {BadPlugIn{"unresolved", "unresolved.op" KO_SUFFIX, 0, false, "symbol: koNobodyHasThis"},
            BadPlugIn{"orphan", "orphan.op" KO_SUFFIX, 0, false, "libplugInAbsent" KO_SUFFIX ": cannot open"},
            BadPlugIn{"truncated", "blur.op" KO_SUFFIX, 20000, false, "cut off"},
            BadPlugIn{"text", nullptr, 0, false, "file too short"},
            BadPlugIn{"failing", "failing.op" KO_SUFFIX, 0, true,
                "Package \"bad\" could not be initialised: Command un/execution"},
            BadPlugIn{"needy", "needy.op" KO_SUFFIX, 0, true, "which is not registered"}}) {
        SCOPED_TRACE(row.name);
        std::string const in = row.name, file = in + "/" + in + ".bad" KO_SUFFIX;
        std::string const path =
            row.fixture ? folder.add(file, row.fixture).getPath() : folder.write(file, "none").string();
        if (row.size != 0) std::filesystem::resize_file(path, row.size);
        folder.add(in + "/" + in + "Zest.bad" KO_SUFFIX, "blur.op" KO_SUFFIX);
        for (int const count : {1, 2}) // at first the good one, then also the bad one, as it was attempted
            EXPECT_EQ(count, PimUtils::loadType(folder.path(in), "bad", mode, callback));
        EXPECT_EQ((Names{"+blur", "*blur"}), Names(plugInJournal().end() - 2, plugInJournal().end()));
        ASSERT_EQ(++failures, messages.texts().size());
        ASSERT_EQ(failures, log.lines().size());
        std::string const message =
            "The plug-in \"" + path + "\" could not be " + (row.opens ? "initialised" : "loaded") + " and is ignored: ";
        ASSERT_TRUE(messages.texts().back().starts_with(message)) << messages.texts().back();
        std::string const reason = messages.texts().back().substr(message.size());
        EXPECT_NE(std::string::npos, reason.find(row.words)) << reason;
        EXPECT_EQ("PlugInMgr:2 [PlugInMgr] Error while attempting to " + std::string(row.opens ? "init" : "load") +
                      " plugin '" + path + "':\n" + reason + "\nPlugin ignored.",
            log.lines().back());
    }
}

TEST_F(PimUtilsTest, SkipsWhatIsNoFileWithoutAWord) {
    folder.write("empty.skipped" KO_SUFFIX, "");
    folder.write("folder.skipped" KO_SUFFIX "/file", "");
    std::filesystem::create_symlink("gone", folder / "dangling.skipped" KO_SUFFIX);
    EXPECT_EQ(0, PimUtils::loadType(folder.path(), "skipped", mode, callback));
    EXPECT_FALSE(PimUtils::load(folder.path("gone.skipped" KO_SUFFIX), mode));
    EXPECT_EQ(Names{}, callback.names);
    EXPECT_EQ(Names{}, messages.texts());
    EXPECT_EQ(Names{}, log.lines());
    EXPECT_FALSE(PimPlugInMgr::getInstance().isLoaded("empty.skipped" KO_SUFFIX)) << "may still be repaired";
    LogRecorder const detailed(5);
    EXPECT_EQ(0, PimUtils::loadType(folder.path(), "skipped", mode, callback));
    std::string const before = "PlugInMgr:5 [PlugInMgr] Plugin '" + folder.path().getPath() + "/";
    EXPECT_EQ((Names{before + "dangling.skipped" KO_SUFFIX "' does not exist.",
                  before + "empty.skipped" KO_SUFFIX "' is a directory or empty.",
                  before + "folder.skipped" KO_SUFFIX "' is a directory or empty."}),
        detailed.lines());
}

TEST_F(PimUtilsTest, LetsPassWhatIsNoFailureOfAPlugIn) {
    plugInActions()["+blur"] = [] { AssertionSource("source").abort("broken"); };
    EXPECT_THROW(PimUtils::load(folder.add("broken.op" KO_SUFFIX, "blur.op" KO_SUFFIX), mode), ExProgramAborted);
    EXPECT_THROW(PimUtils::load(folder.add("standard.op" KO_SUFFIX, "blur.op" KO_SUFFIX), InInitMgr::Standard),
        ExProgramAborted);
    class : public PimUtils::Callback {
        void notifyLoading(OsFilePath const&) override { throw std::runtime_error("of the host"); }
    } throwing;
    folder.add("throwing.pass" KO_SUFFIX, "blur.op" KO_SUFFIX);
    EXPECT_THROW(PimUtils::loadType(folder.path(), "pass", mode, throwing), std::runtime_error);
    EXPECT_EQ(Names{}, messages.texts());
}

TEST_F(PimUtilsTest, LoadsOneByPathOrName) {
    folder.add("one/a.single" KO_SUFFIX, "blur.op" KO_SUFFIX);
    folder.add("two/a.single" KO_SUFFIX, "grade.op" KO_SUFFIX);
    folder.add("two/b.single" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    folder.add("two/c" KO_SUFFIX, "invert.op" KO_SUFFIX);
    folder.add("elsewhere/d.single" KO_SUFFIX, "blur.op" KO_SUFFIX);
    PimUtils::setFilePaths({folder.path("nowhere"), folder.path("one"), folder.path("two")});
    struct Row {
        std::string path;
        bool isLoaded;
        Names journal;
    };
    for (Row const &row : {Row{"a.single", true, {"+blur", "*blur"}}, Row{"a.single" KO_SUFFIX, true, {}},
             Row{"b.single", true, {"+noise", "*noise"}}, Row{"c", true, {"+invert", "*invert"}},
             Row{"d.single", false, {}}, Row{folder.path("one/d.single").getPath(), false, {}},
             Row{"two/c" KO_SUFFIX KO_SUFFIX, false, {}},
             Row{folder.path("elsewhere/d.single").getPath(), true, {"+blur", "*blur"}}}) {
        plugInJournal().clear();
        EXPECT_EQ(row.isLoaded, PimUtils::load(row.path, mode)) << row.path;
        EXPECT_EQ(row.journal, plugInJournal()) << row.path;
    }
}

TEST_F(PimUtilsTest, NeverTakesAPlugInFromTheCurrentDirectoryUnasked) {
    inChildProcess([this] {
        folder.add("near.op" KO_SUFFIX, "blur.op" KO_SUFFIX);
        std::filesystem::current_path(folder / "");
        EXPECT_FALSE(PimUtils::load("near.op", mode));
        PimUtils::addPiDirectoryPath("");
        EXPECT_FALSE(PimUtils::load("near.op", mode));
        EXPECT_THROW(PimUtils::loadType("op", mode, callback), OsFileEx::ExInvalidPath);
        EXPECT_TRUE(PimUtils::load("./near.op", mode));
    });
}

TEST_F(PimUtilsTest, StopsAtADirectoryThatDoesNotExist) {
    folder.add("first/f.stop" KO_SUFFIX, "blur.op" KO_SUFFIX);
    folder.add("last/l.stop" KO_SUFFIX, "grade.op" KO_SUFFIX);
    PimUtils::setFilePaths({folder.path("first"), folder.path("missing"), folder.path("last")});
    EXPECT_EQ("PimUtils::loadWildcard: Invalid path \"" + folder.path("missing").getPath() +
                  "\". [framework\\plugInMgr\\src\\pimUtils:380]",
        thrownBy<OsFileEx::ExInvalidPath>([&] { PimUtils::loadType("stop", mode, callback); }, true));
    EXPECT_EQ((Names{"first/f.stop" KO_SUFFIX}), callback.names);
}

TEST_F(PimUtilsTest, SearchesWithoutTheDirectoryThatAPlugInAddsMeanwhile) {
    folder.add("g.growing" KO_SUFFIX, "blur.op" KO_SUFFIX);
    PimUtils::setFilePaths({folder.path()});
    plugInActions()["+blur"] = [] { PimUtils::addPiDirectoryPath("added"); };
    EXPECT_EQ(1, PimUtils::loadType("growing", mode, callback));
    EXPECT_EQ(2u, PimUtils::getFilePaths().size());
}

} // namespace
