#include "framework/plugInMgr/pimReport.h"
#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "resmgt/osSharedLib.h"
#include "tests/support/declaredLibrary.h"
#include "tests/support/plugInTest.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace {

using namespace Ko;
using namespace KoTest;

using Names = std::vector<std::string>;

constexpr InInitMgr::InitType mode = InInitMgr::Reinitialization;
std::string const framework = "interface=framework 8.0\n";

std::string nameOf(PimStage stage) {
    return std::array{"found", "refused", "loaded", "failed"}[static_cast<std::size_t>(stage)];
}

// Writes "load NAME" and "STAGE NAME: REASON".
class Recorder final : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const& path) override { entries.push_back("load " + path.getFileName().getPath()); }
    void notifyRefused(OsFilePath const& path, PimStage stage, ExBase const& error) override {
        entries.push_back(nameOf(stage) + " " + path.getFileName().getPath() + ": " + error.getReason());
        isOpeningError = dynamic_cast<OsSharedLibEx const*>(&error) != nullptr;
    }
    Names take() { return std::exchange(entries, {}); }

    Names entries;
    bool isOpeningError = false;
};

class PimReportTest : public PlugInTest {
protected:
    PimReportTest() {
        PimUtils::setFilePaths({folder.path()});
        PimUtils::setInterface("host 2.3");
    }

    // Writes a plug-in that declares its type, and these lines.
    OsFilePath write(std::string const& file, std::string const& lines, std::string const& library = emptyLibrary()) {
        std::string type = file.substr(0, file.rfind('.'));
        type = type.substr(type.rfind('.') + 1);
        std::string const declaration = declarationOf("name=n\nversion=1\ntype=" + type + "\n" + framework + lines);
        return folder.write(file, withSection(library, declaration)).string();
    }
    // Writes one that can be loaded.
    OsFilePath writeGood(
        std::string const& file, std::string const& lines = {}, std::string const& fixture = "blur.op" KO_SUFFIX) {
        return write(file, lines, contentOf((std::filesystem::path(KO_TEST_PLUG_INS) / fixture).string()));
    }
    static Names withoutDirectory(Names const& entries, std::string const& directory) {
        Names result = entries;
        for (std::string& entry : result)
            for (auto at = entry.find(directory); at != std::string::npos; at = entry.find(directory))
                entry.erase(at, directory.size());
        return result;
    }
    // The findings of a type: "STAGE NAME: REASON".
    Names reportOf(std::string const& type) const {
        Names result;
        for (PimFinding const& finding : PimUtils::getReport().plugIns)
            if (finding.path.getPath().ends_with("." + type + KO_SUFFIX))
                result.push_back(
                    nameOf(finding.stage) + " " + finding.path.getFileName().getPath() + ": " + finding.reason);
        return withoutDirectory(result, folder.path().getPath() + "/");
    }

    Recorder recorder;
};

TEST_F(PimReportTest, NamesFileStageAndReasonOfEveryFile) {
    folder.add("one/a.all" KO_SUFFIX, "blur.op" KO_SUFFIX);
    folder.add("two/a.all" KO_SUFFIX, "grade.op" KO_SUFFIX);
    folder.write("two/b.all" KO_SUFFIX, "");
    folder.add("two/c.all" KO_SUFFIX, "unresolved.op" KO_SUFFIX);
    folder.add("two/d.all" KO_SUFFIX, "failing.op" KO_SUFFIX);
    write("two/e.all" KO_SUFFIX, "interface=host 3.0\n");
    writeGood("two/f.all" KO_SUFFIX, "interface=host 2.1\n", "grade.op" KO_SUFFIX);
    PimUtils::setFilePaths({folder.path("one"), folder.path("two")});
    EXPECT_EQ(3, PimUtils::loadType("all", mode, recorder));
    Names const entries = recorder.take();
    ASSERT_EQ(9u, entries.size());
    std::string const unfit = "e.all" KO_SUFFIX ": it was built for host 3.0, and this application offers host 2.3";
    EXPECT_EQ((Names{"load a.all" KO_SUFFIX,
                  "found a.all" KO_SUFFIX ": Library \"" + folder.path("two/a.all" KO_SUFFIX).getPath() +
                      "\" already loaded.",
                  "found b.all" KO_SUFFIX ": is a directory or empty.", "load c.all" KO_SUFFIX}),
        Names(entries.begin(), entries.begin() + 4));
    EXPECT_TRUE(entries[4].starts_with("failed c.all" KO_SUFFIX ": " + folder.path("two/c.all" KO_SUFFIX).getPath()))
        << entries[4];
    EXPECT_EQ("failed d.all" KO_SUFFIX ": Package \"bad\" could not be initialised: Command un/execution failure.",
        entries[6]);
    EXPECT_EQ((Names{"refused " + unfit, "load f.all" KO_SUFFIX}), Names(entries.begin() + 7, entries.end()));
    EXPECT_EQ(withoutDirectory(
                  {"loaded a.all" KO_SUFFIX ": ",
                      "found a.all" KO_SUFFIX ": has the file name of one/a.all" KO_SUFFIX ", which was loaded before.",
                      entries[2], entries[4], entries[6], entries[7], "loaded f.all" KO_SUFFIX ": "},
                  folder.path().getPath() + "/"),
        reportOf("all"));
    EXPECT_EQ((Vector<OsFilePath>{folder.path("one"), folder.path("two")}), PimUtils::getReport().directories);
    // Loaded and failed files are not checked again; a refused one may have been repaired, and its warning is not repeated.
    EXPECT_EQ(3u, messages.texts().size());
    EXPECT_EQ(5, PimUtils::loadType("all", mode, recorder));
    EXPECT_EQ(3u, recorder.take().size());
    EXPECT_EQ(3u, messages.texts().size());
    writeGood("two/e.all" KO_SUFFIX);
    EXPECT_EQ(6, PimUtils::loadType("all", mode, recorder));
    EXPECT_EQ("loaded e.all" KO_SUFFIX ": ", reportOf("all").at(5));
}

TEST_F(PimReportTest, RefusesByTheDeclarationBeforeAnyCodeRuns) {
    auto const declared = [&](std::string const& lines) { return declarationOf("name=n\nversion=1\n" + lines); };
    struct Row {
        std::string section;
        char const* reason;
    };
    for (Row const& row : {Row{"x", "its declaration does not begin with KOPLUGIN"},
             Row{declared("type=gen\n" + framework),
                 "it declares the type \"gen\", and its file name has the type \"early\""},
             Row{declared("type=early\ninterface=framework 7.9\n"),
                 "it was built for framework 7.9, and this application offers framework 8.0"},
             Row{declared("type=early\ninterface=framework 8.1\n"),
                 "it was built for framework 8.1, and this application offers framework 8.0"},
             Row{declared("type=early\n" + framework + "interface=viewer 1.0\n"),
                 "it was built for viewer 1.0, which this application does not offer"}}) {
        OsFilePath const path =
            folder
                .write("x.early" KO_SUFFIX, withSection(contentOf(KO_TEST_PLUG_INS "/early.op" KO_SUFFIX), row.section))
                .string();
        EXPECT_FALSE(PimUtils::load(path, mode, recorder));
        EXPECT_EQ((Names{std::string("refused x.early" KO_SUFFIX ": ") + row.reason}), recorder.take());
        EXPECT_EQ(
            "The plug-in \"" + path.getPath() + "\" is refused and ignored: " + row.reason, messages.texts().back());
        EXPECT_EQ("PlugInMgr:2 [PlugInMgr] Error while attempting to check plugin '" + path.getPath() + "':\n" +
                      row.reason + "\nPlugin ignored.",
            log.lines().back());
        EXPECT_FALSE(PimPlugInMgr::getInstance().isLoaded(path));
    }
    EXPECT_EQ(Names{}, plugInJournal());
}

TEST_F(PimReportTest, LoadsRequiredPlugInsFirst) {
    writeGood("near/a.first" KO_SUFFIX, "requires=b.second\nrequires=c.second\n");
    writeGood("near/b.second" KO_SUFFIX, "requires=c.second\n", "grade.op" KO_SUFFIX);
    writeGood("far/b.second" KO_SUFFIX, "requires=missing\n", "invert.op" KO_SUFFIX);
    folder.add("far/c.second" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    PimUtils::setFilePaths({folder.path("absent"), folder.path("far")});
    EXPECT_EQ(1, PimUtils::loadType(folder.path("near"), "first", mode, recorder));
    EXPECT_EQ((Names{"load c.second" KO_SUFFIX, "load b.second" KO_SUFFIX, "load a.first" KO_SUFFIX}), recorder.take());
    EXPECT_EQ((Names{"+noise", "*noise", "+grade", "*grade", "+blur", "*blur"}), plugInJournal());
    EXPECT_EQ((Names{"loaded b.second" KO_SUFFIX ": ", "loaded c.second" KO_SUFFIX ": "}), reportOf("second"));
}

TEST_F(PimReportTest, RefusesPlugInsWhoseRequirementsCannotBeMet) {
    struct Row {
        std::vector<std::pair<char const*, char const*>> files; // names and lines
        char const* reason;                                     // of the first one
    };
    int number = 0;
    for (Row const& row :
        {Row{{{"a", "requires=b.T\n"}}, "it requires b.T, which is in none of the plug-in directories"},
            Row{{{"a", "requires=b.T\n"}, {"b", "interface=host 1.0\n"}},
                "it requires b.T, which is refused: it was built for host 1.0, and this application offers host 2.3"},
            Row{{{"a", "requires=a.T\n"}}, "plug-ins require one another in a circle: a.T" KO_SUFFIX ", a.T" KO_SUFFIX},
            Row{{{"a", "requires=b.T\n"}, {"b", "requires=c.T\n"}, {"c", "requires=b.T\n"}},
                "it requires b.T, which is refused: it requires c.T, which is refused: plug-ins require one another in "
                "a circle: "
                "b.T" KO_SUFFIX ", c.T" KO_SUFFIX ", b.T" KO_SUFFIX},
            Row{{{"a", "requires=b.T\n"}, {"b", nullptr}}, "it requires b.T, which failed: "}}) {
        std::string const type = "circle" + std::to_string(number++);
        auto const withType = [&](std::string text) {
            for (auto at = text.find(".T"); at != std::string::npos; at = text.find(".T"))
                text.replace(at + 1, 1, type);
            return text;
        };
        for (auto const& [name, lines] : row.files) {
            std::string const file = name + ("." + type) + KO_SUFFIX;
            lines ? static_cast<void>(writeGood(file, withType(lines)))
                  : static_cast<void>(folder.add(file, "failing.op" KO_SUFFIX));
        }
        plugInJournal().clear();
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_FALSE(PimUtils::load("a." + type, mode, recorder));
            Names const entries = recorder.take();
            std::string const expected = "refused a." + type + KO_SUFFIX ": " + withType(row.reason);
            EXPECT_TRUE(entries.back().starts_with(expected)) << entries.back() << " is not " << expected;
        }
        EXPECT_EQ(Names{}, row.files.back().second ? plugInJournal() : Names{});
        EXPECT_FALSE(PimPlugInMgr::getInstance().isLoaded("a." + type + KO_SUFFIX));
    }
}

// Many files that require one another take neither the stack nor much time.
TEST_F(PimReportTest, BoundsWhatPlugInsMayRequire) {
    for (int index = 0; index < 40; ++index)
        write(std::to_string(index) + ".chain" KO_SUFFIX, "requires=" + std::to_string(index + 1) + ".chain\n");
    EXPECT_FALSE(PimUtils::load("0.chain", mode, recorder));
    EXPECT_TRUE(recorder.take().back().ends_with("which is refused: it requires too many plug-ins"));
    for (int index = 0; index < 30; ++index) {
        std::string const next = "requires=" + std::to_string(index + 1) + ".twice\n";
        write(std::to_string(index) + ".twice" KO_SUFFIX, next + next);
    }
    write("30.twice" KO_SUFFIX, "requires=missing\n");
    EXPECT_FALSE(PimUtils::load("0.twice", mode, recorder));
    write("30.twice" KO_SUFFIX, "");
    EXPECT_FALSE(PimUtils::load("0.twice", mode, recorder));
    EXPECT_EQ("load 30.twice" KO_SUFFIX, recorder.take().at(1))
        << "each is checked once, and the last one is opened first";
}

TEST_F(PimReportTest, KeepsTheReportWhenACallbackThrowsOrLoads) {
    folder.write("a.busy" KO_SUFFIX, "");
    writeGood("b.busy" KO_SUFFIX);
    class : public PimUtils::Callback {
        void notifyLoading(OsFilePath const&) override {}
        void notifyRefused(OsFilePath const&, PimStage, ExBase const&) override {
            if (throws) throw std::runtime_error("of the host");
            EXPECT_TRUE(PimUtils::load("b.busy", mode));
        }

    public:
        bool throws = true;
    } callback;
    EXPECT_THROW(PimUtils::loadType("busy", mode, callback), std::runtime_error);
    EXPECT_EQ((Names{"found a.busy" KO_SUFFIX ": is a directory or empty."}), reportOf("busy"));
    callback.throws = false;
    EXPECT_EQ(1, PimUtils::loadType("busy", mode, callback));
    EXPECT_EQ((Names{"+blur", "*blur"}), plugInJournal());
    EXPECT_EQ("loaded b.busy" KO_SUFFIX ": ", reportOf("busy").back());
}

} // namespace
