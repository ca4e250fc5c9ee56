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
    folder.add("one/t2.typed.so", "blur.op.so");
    folder.add("one/t1.typed.so", "grade.op.so");
    folder.add("one/t3.other.so", "noise.gen.so");
    folder.add("two/t4.typed.so", "noise.gen.so");
    folder.add("two/t1.typed.so", "invert.op.so"); // has the name of another one
    PimUtils::addPiDirectoryPath(folder.path("one"));
    PimUtils::addPiDirectoryPath(folder.path("two"));
    EXPECT_EQ(4, PimUtils::loadType("typed", mode, callback));
    EXPECT_EQ((Names{"one/t1.typed.so", "one/t2.typed.so", "two/t4.typed.so"}), callback.names);
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
    for (BadPlugIn const& row : {BadPlugIn{"unresolved", "unresolved.op.so", 0, false, "symbol: koNobodyHasThis"},
             BadPlugIn{"orphan", "orphan.op.so", 0, false, "libplugInAbsent.so: cannot open"},
             BadPlugIn{"truncated", "blur.op.so", 20000, false, "cut off"},
             BadPlugIn{"text", nullptr, 0, false, "file too short"},
             BadPlugIn{
                 "failing", "failing.op.so", 0, true, "Package \"bad\" could not be initialised: Command un/execution"},
             BadPlugIn{"needy", "needy.op.so", 0, true, "which is not registered"}}) {
        SCOPED_TRACE(row.name);
        std::string const in = row.name, file = in + "/" + in + ".bad.so";
        std::string const path =
            row.fixture ? folder.add(file, row.fixture).getPath() : folder.write(file, "none").string();
        if (row.size != 0) std::filesystem::resize_file(path, row.size);
        folder.add(in + "/" + in + "Zest.bad.so", "blur.op.so");
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
    folder.write("empty.skipped.so", "");
    folder.write("folder.skipped.so/file", "");
    std::filesystem::create_symlink("gone", folder / "dangling.skipped.so");
    EXPECT_EQ(0, PimUtils::loadType(folder.path(), "skipped", mode, callback));
    EXPECT_FALSE(PimUtils::load(folder.path("gone.skipped.so"), mode));
    EXPECT_EQ(Names{}, callback.names);
    EXPECT_EQ(Names{}, messages.texts());
    EXPECT_EQ(Names{}, log.lines());
    EXPECT_FALSE(PimPlugInMgr::getInstance().isLoaded("empty.skipped.so")) << "may still be repaired";
    LogRecorder const detailed(5);
    EXPECT_EQ(0, PimUtils::loadType(folder.path(), "skipped", mode, callback));
    std::string const before = "PlugInMgr:5 [PlugInMgr] Plugin '" + folder.path().getPath() + "/";
    EXPECT_EQ(
        (Names{before + "dangling.skipped.so' does not exist.", before + "empty.skipped.so' is a directory or empty.",
            before + "folder.skipped.so' is a directory or empty."}),
        detailed.lines());
}

TEST_F(PimUtilsTest, LetsPassWhatIsNoFailureOfAPlugIn) {
    plugInActions()["+blur"] = [] { AssertionSource("source").abort("broken"); };
    EXPECT_THROW(PimUtils::load(folder.add("broken.op.so", "blur.op.so"), mode), ExProgramAborted);
    EXPECT_THROW(PimUtils::load(folder.add("standard.op.so", "blur.op.so"), InInitMgr::Standard), ExProgramAborted);
    class : public PimUtils::Callback {
        void notifyLoading(OsFilePath const&) override { throw std::runtime_error("of the host"); }
    } throwing;
    folder.add("throwing.pass.so", "blur.op.so");
    EXPECT_THROW(PimUtils::loadType(folder.path(), "pass", mode, throwing), std::runtime_error);
    EXPECT_EQ(Names{}, messages.texts());
}

TEST_F(PimUtilsTest, LoadsOneByPathOrName) {
    folder.add("one/a.single.so", "blur.op.so");
    folder.add("two/a.single.so", "grade.op.so");
    folder.add("two/b.single.so", "noise.gen.so");
    folder.add("two/c.so", "invert.op.so");
    folder.add("elsewhere/d.single.so", "blur.op.so");
    PimUtils::setFilePaths({folder.path("nowhere"), folder.path("one"), folder.path("two")});
    struct Row {
        std::string path;
        bool isLoaded;
        Names journal;
    };
    for (Row const& row : {Row{"a.single", true, {"+blur", "*blur"}}, Row{"a.single.so", true, {}},
             Row{"b.single", true, {"+noise", "*noise"}}, Row{"c", true, {"+invert", "*invert"}},
             Row{"d.single", false, {}}, Row{folder.path("one/d.single").getPath(), false, {}},
             Row{"two/c.so.so", false, {}},
             Row{folder.path("elsewhere/d.single").getPath(), true, {"+blur", "*blur"}}}) {
        plugInJournal().clear();
        EXPECT_EQ(row.isLoaded, PimUtils::load(row.path, mode)) << row.path;
        EXPECT_EQ(row.journal, plugInJournal()) << row.path;
    }
}

TEST_F(PimUtilsTest, NeverTakesAPlugInFromTheCurrentDirectoryUnasked) {
    inChildProcess([this] {
        folder.add("near.op.so", "blur.op.so");
        std::filesystem::current_path(folder / "");
        EXPECT_FALSE(PimUtils::load("near.op", mode));
        PimUtils::addPiDirectoryPath("");
        EXPECT_FALSE(PimUtils::load("near.op", mode));
        EXPECT_THROW(PimUtils::loadType("op", mode, callback), OsFileEx::ExInvalidPath);
        EXPECT_TRUE(PimUtils::load("./near.op", mode));
    });
}

TEST_F(PimUtilsTest, StopsAtADirectoryThatDoesNotExist) {
    folder.add("first/f.stop.so", "blur.op.so");
    folder.add("last/l.stop.so", "grade.op.so");
    PimUtils::setFilePaths({folder.path("first"), folder.path("missing"), folder.path("last")});
    EXPECT_EQ("PimUtils::loadWildcard: Invalid path \"" + folder.path("missing").getPath() +
                  "\". [framework\\plugInMgr\\src\\pimUtils:380]",
        thrownBy<OsFileEx::ExInvalidPath>([&] { PimUtils::loadType("stop", mode, callback); }, true));
    EXPECT_EQ((Names{"first/f.stop.so"}), callback.names);
}

TEST_F(PimUtilsTest, SearchesWithoutTheDirectoryThatAPlugInAddsMeanwhile) {
    folder.add("g.growing.so", "blur.op.so");
    PimUtils::setFilePaths({folder.path()});
    plugInActions()["+blur"] = [] { PimUtils::addPiDirectoryPath("added"); };
    EXPECT_EQ(1, PimUtils::loadType("growing", mode, callback));
    EXPECT_EQ(2u, PimUtils::getFilePaths().size());
}

} // namespace
