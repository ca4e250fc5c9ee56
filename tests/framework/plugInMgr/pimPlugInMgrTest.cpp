#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/pimEx.h"
#include "framework/plugInMgr/pimUtils.h"
#include "tests/support/childProcess.h"
#include "tests/support/plugInTest.h"
#include "tests/support/thrown.h"

#include <barrier>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <typeindex>

namespace {

using namespace Ko;
using namespace KoTest;

using Journal = std::vector<std::string>;

PimPlugInMgr& manager() {
    return PimPlugInMgr::getInstance();
}

void load(OsFilePath const& path) {
    manager().loadPlugIn(path, InInitMgr::Reinitialization);
}

std::string outcomeOf(OsFilePath const& path) {
    return messageOf([&] { load(path); });
}
std::string const isLoaded = "nothing was thrown";

Journal takeJournal() {
    return std::exchange(plugInJournal(), {});
}

using PimPlugInMgrTest = PlugInTest;

TEST_F(PimPlugInMgrTest, InitialisesThePackagesAndKnowsTheLibraryByItsFileName) {
    OsFilePath const path = folder.add("a/x.io" KO_SUFFIX, "blur.op" KO_SUFFIX);
    OsFilePath const sameName = folder.add("b/x.io" KO_SUFFIX, "grade.op" KO_SUFFIX);
    EXPECT_FALSE(manager().isLoaded(path));
    load(path);
    EXPECT_EQ((Journal{"+blur", "*blur"}), takeJournal());
    for (OsFilePath const& same : {path, sameName, OsFilePath("x.io" KO_SUFFIX)})
        EXPECT_TRUE(manager().isLoaded(same)) << same.getPath();
    EXPECT_FALSE(manager().isLoaded("x.io"));
    EXPECT_EQ("Library \"" + sameName.getPath() + "\" already loaded. [framework\\plugInMgr\\src\\pimPlugInMgr:148]",
        thrownBy<PimEx::ExLibMultipleLoad>([&] { load(sameName); }, true));
    EXPECT_EQ(Journal{}, takeJournal());
}

TEST_F(PimPlugInMgrTest, AbortsInAnyModeButTheTwoForLoading) {
    for (int const mode : {0, 3}) {
        OsFilePath const path = folder.add("mode" + std::to_string(mode) + ".op" KO_SUFFIX, "blur.op" KO_SUFFIX);
        EXPECT_EQ("Can't load plugins in standard initialization mode. [framework\\plugInMgr\\src\\pimPlugInMgr:170]",
            thrownBy<ExProgramAborted>(
                [&] { manager().loadPlugIn(path, static_cast<InInitMgr::InitType>(mode)); }, true));
    }
    EXPECT_EQ(Journal{}, takeJournal());
}

TEST_F(PimPlugInMgrTest, LetsAPlugInLoadOthers) {
    OsFilePath const outer = folder.add("outer.op" KO_SUFFIX, "blur.op" KO_SUFFIX);
    OsFilePath const joining = folder.add("joining.op" KO_SUFFIX, "grade.op" KO_SUFFIX);
    OsFilePath const own = folder.add("own.op" KO_SUFFIX, "invert.op" KO_SUFFIX);
    plugInActions()["+blur"] = [&] {
        manager().loadPlugIn(joining, InInitMgr::Recursive);
        manager().loadPlugIn(own, InInitMgr::Reinitialization);
    };
    load(outer);
    EXPECT_EQ((Journal{"+blur", "+grade", "+invert", "*invert", "*grade", "*blur"}), takeJournal());
    OsFilePath const itself = folder.add("itself.op" KO_SUFFIX, "blur.op" KO_SUFFIX);
    plugInActions()["+blur"] = [&] { load(itself); };
    EXPECT_THROW(load(itself), PimEx::ExLibMultipleLoad);
}

TEST_F(PimPlugInMgrTest, InitialisesAPlugInOnlyWhenItHasOpenedCompletely) {
    OsFilePath const early = folder.add("early.op" KO_SUFFIX);
    OsFilePath const other = folder.add("loadedEarly.op" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    plugInActions()["early opens"] = [&] { load(other); };
    load(early);
    EXPECT_EQ((Journal{"early opens", "+noise", "*noise", "+early", "*early"}), takeJournal());
}

TEST_F(PimPlugInMgrTest, KeepsTheLibraryThatAFailedPlugInSharesWithAnother) {
    struct Row {
        char const* failing;
        char const* failingHook;
        Journal first;
        Journal second;
    };
    for (Row const& row :
        {Row{"first.op" KO_SUFFIX, "+first", {"+support", "+first", "*support"}, {"+second", "*second"}},
            Row{"first.op" KO_SUFFIX, "*first", {"+support", "+first", "*support", "*first", "-first"},
                {"+second", "*second"}},
            Row{"first.op" KO_SUFFIX, "+support", {"+support"}, {}},
            Row{"needy.op" KO_SUFFIX, "", {}, {"+support", "+second", "*support", "*second"}}})
        inChildProcess([&row] {
            PlugInFolder const plugIns;
            plugInActions()[row.failingHook] = [] { throw std::runtime_error("no"); };
            EXPECT_NE(isLoaded, outcomeOf(plugIns.add(row.failing)));
            EXPECT_EQ(row.first, takeJournal());
            bool const isSupported = !row.second.empty();
            EXPECT_EQ(isSupported, outcomeOf(plugIns.add("second.op" KO_SUFFIX)) == isLoaded);
            EXPECT_EQ(row.second, takeJournal());
            InInitMgr::finalize();
            EXPECT_EQ(isSupported ? (Journal{"-second", "-support"}) : Journal{}, takeJournal());
        });
}

TEST_F(PimPlugInMgrTest, CastsAndThrowsAcrossTheBorder) {
    shapes().push_back(RCShdPtr<Circle>::create());
    plugInActions()["*shapes"] = [] { throw std::out_of_range("of the host"); };
    EXPECT_EQ("Package \"shapes\" could not be initialised: caught", outcomeOf(folder.add("shapes.op" KO_SUFFIX)));
    ASSERT_EQ(3u, shapes().size());
    std::vector<std::type_index> types;
    for (RCShdPtr<Shape> const& shape : shapes()) {
        Shape const& object = *shape;
        EXPECT_NE(nullptr, dynamic_cast<Circle const*>(&object));
        types.emplace_back(typeid(object));
    }
    EXPECT_EQ(types[0], types[1]);
    EXPECT_NE(types[1], types[2]);
}

TEST_F(PimPlugInMgrTest, OpensEachLibraryOnceHoweverManyThreadsLoad) {
    constexpr int libraries = 8, threads = 4;
    Vector<OsFilePath> paths;
    for (int index = 0; index < libraries; ++index)
        paths.push_back(folder.add("threads" + std::to_string(index) + ".op" KO_SUFFIX, "blur.op" KO_SUFFIX));
    std::atomic<int> loaded{0}, refused{0};
    std::barrier start(threads);
    std::vector<std::jthread> pool;
    for (int thread = 0; thread < threads; ++thread)
        pool.emplace_back([&] {
            start.arrive_and_wait();
            for (OsFilePath const& path : paths) {
                ++(outcomeOf(path) == isLoaded ? loaded : refused);
                EXPECT_TRUE(manager().isLoaded(path));
                EXPECT_FALSE(PimUtils::getReport().plugIns.empty());
            }
        });
    pool.clear();
    EXPECT_EQ(libraries, loaded);
    EXPECT_EQ(libraries * (threads - 1), refused);
    EXPECT_EQ(2u * libraries, takeJournal().size());
}

} // namespace
