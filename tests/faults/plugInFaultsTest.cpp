#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/pimUtils.h"
#include "resmgt/msgServer.h"
#include "tests/faults/faultsTest.h"
#include "tests/fixtures/plugIns/plugInJournal.h"
#include "tests/support/declaredLibrary.h"
#include "tests/support/plugInFolder.h"

#include <algorithm>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

// An exception of a library's static constructor ends the process, by the rules of the language. So no allocation fails
// while the system opens a library.
extern "C" __attribute__((visibility("default"))) void* dlopen(char const* file, int mode) {
    using Open = void* (*)(char const*, int);
    static auto const open = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "dlopen"));
    KoTest::AllocationFaults::Pause const pause;
    return open(file, mode);
}

namespace {

using namespace Ko;
using namespace KoTest;

// Each attempt starts the framework in a process of its own.
class PlugInFaults : public FaultsTest {
protected:
    PlugInFaults() { plugInJournal().reserve(1000); } // so that it takes no memory
    ~PlugInFaults() override { MsgProtocol::setHandler(nullptr); }

    // The entries since the last call: "+first +support".
    static std::string takeJournal() {
        std::string result;
        for (std::string const& entry : plugInJournal())
            result += (result.empty() ? "" : " ") + entry;
        plugInJournal().clear();
        return result;
    }
    static void load(OsFilePath const& path) {
        PimPlugInMgr::getInstance().loadPlugIn(path, InInitMgr::Reinitialization);
    }

    /// Runs `body` in a copy of this process, as its effects cannot be undone. @returns whether a fault occurred there.
    template <class Body>
    static bool hadFaultInCopy(Body body) {
        std::cout << std::flush;
        pid_t const child = ::fork();
        if (child == 0) {
            bool const hadFault = body();
            std::cout << std::flush;
            ::_exit(HasFailure() ? 1 : hadFault ? 2 : 3);
        }
        int status = 0;
        EXPECT_EQ(child, ::waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) >= 2) << "status " << status;
        return WIFEXITED(status) && WEXITSTATUS(status) == 2;
    }

    /// As `tryAllFaults`, each time in a copy of this process.
    template <class Attempt>
    static void tryAllFaultsInCopies(std::string const& name, Attempt attempt) {
        forEachFault(name, [&](AllocationFaults::Kind kind, long number) {
            return hadFaultInCopy([&] {
                FaultyAttempt faulty(kind, number, false);
                attempt(faulty);
                return faulty.hadFault;
            });
        });
    }

    PlugInFolder folder;
};

TEST_F(PlugInFaults, TheFrameworkStartsOrSaysWhyNot) {
    tryAllFaultsInCopies("initialize", [&](FaultyAttempt& attempt) {
        bool const isDone = attempt([] { InInitMgr::initialize(); });
        EXPECT_EQ(isDone, InInitMgr::isInitialized());
        EXPECT_TRUE(isDone || !attempt.reason.empty());
        InInitMgr::finalize();
    });
}

TEST_F(PlugInFaults, TheFrameworkEndsWithoutMemory) {
    OsFilePath const path = folder.add("blur.op" KO_SUFFIX);
    tryAllFaultsInCopies("finalize", [&](FaultyAttempt& attempt) {
        InInitMgr::initialize();
        load(path);
        takeJournal();
        attempt.withoutFail([] { InInitMgr::finalize(); });
        EXPECT_EQ("-blur", takeJournal());
    });
}

// A plug-in that failed is not initialised, and the next one is loaded as usual.
TEST_F(PlugInFaults, APlugInIsLoadedOrNothingOfItIsLeft) {
    OsFilePath const path = folder.add("blur.op" KO_SUFFIX), next = folder.add("grade.op" KO_SUFFIX);
    tryAllFaultsInCopies("loadPlugIn", [&](FaultyAttempt& attempt) {
        InInitMgr::initialize();
        bool const isDone = attempt([&] { load(path); });
        std::string const journal = takeJournal();
        if (isDone)
            EXPECT_EQ("+blur *blur", journal);
        else
            EXPECT_TRUE(journal.empty() || journal == "+blur -blur" || journal == "+blur *blur -blur") << journal;
        load(next);
        EXPECT_EQ("+grade *grade", takeJournal());
        InInitMgr::finalize();
        EXPECT_EQ(isDone ? "-grade -blur" : "-grade", takeJournal());
    });
}

TEST_F(PlugInFaults, ALibraryThatAPlugInNeededIsThereForTheNextOne) {
    OsFilePath const path = folder.add("first.op" KO_SUFFIX), next = folder.add("second.op" KO_SUFFIX);
    tryAllFaultsInCopies("loadPlugIn that needs a library", [&](FaultyAttempt& attempt) {
        InInitMgr::initialize();
        attempt([&] { load(path); });
        load(next);
        InInitMgr::finalize();
        std::string const journal = takeJournal();
        EXPECT_EQ(std::count(journal.begin(), journal.end(), '+'), std::count(journal.begin(), journal.end(), '-'))
            << journal;
        EXPECT_EQ(journal.find("+second"), journal.rfind("+second")) << journal;
        EXPECT_LT(journal.find("+support"), journal.find("+second")) << journal;
        EXPECT_LT(journal.find("+second"), journal.find("*second")) << journal;
        EXPECT_TRUE(journal.ends_with("-support")) << journal;
    });
}

TEST_F(PlugInFaults, TheSearchPassesOnThatMemoryHasRunOut) {
    MsgProtocol::setHandler([](Msg const&) {});
    for (char const* const name : {"blur.op" KO_SUFFIX, "failing.op" KO_SUFFIX, "grade.op" KO_SUFFIX})
        folder.add(name);
    tryAllFaultsInCopies("loadType", [&](FaultyAttempt& attempt) {
        InInitMgr::initialize();
        attempt([&] { PimUtils::loadType(folder.path(), "op", InInitMgr::Reinitialization, PimUtils::getNullCb()); });
        InInitMgr::finalize();
        std::string const journal = takeJournal();
        EXPECT_EQ(std::count(journal.begin(), journal.end(), '+') - (journal.find("+bad") != std::string::npos ? 1 : 0),
            std::count(journal.begin(), journal.end(), '-'))
            << journal;
    });
}

// A plug-in that was not loaded because memory ran out does not run, and the report says so.
TEST_F(PlugInFaults, APlugInRunsOnlyAfterThoseThatItRequires) {
    MsgProtocol::setHandler([](Msg const&) {});
    auto const write = [&](char const* name, char const* fixture, std::string const& lines) {
        std::string const library = contentOf((std::filesystem::path(KO_TEST_PLUG_INS) / fixture).string());
        std::string const declaration = "name=n\nversion=1\ntype=op\ninterface=framework 8.0\n" + lines;
        return folder.write(name, withSection(library, declarationOf(declaration))).string();
    };
    write("required.op" KO_SUFFIX, "grade.op" KO_SUFFIX, "");
    OsFilePath const path = write("a.op" KO_SUFFIX, "blur.op" KO_SUFFIX, "requires=required.op\n");
    tryAllFaultsInCopies("load with a required plug-in", [&](FaultyAttempt& attempt) {
        InInitMgr::initialize();
        bool isPresent = false;
        attempt([&] { isPresent = PimUtils::load(path, InInitMgr::Reinitialization); });
        auto const report = PimUtils::getReport().plugIns;
        auto const is = [&](PimStage stage) {
            return std::any_of(report.begin(), report.end(),
                [&](PimFinding const& finding) { return finding.path == path && finding.stage == stage; });
        };
        bool const isLoaded = is(PimStage::Loaded);
        EXPECT_TRUE(isLoaded || is(PimStage::Failed) || !PimPlugInMgr::getInstance().isLoaded(path));
        std::string const journal = takeJournal();
        EXPECT_TRUE(!isPresent || isLoaded);
        EXPECT_EQ(isLoaded, journal == "+grade *grade +blur *blur") << journal;
        EXPECT_TRUE(journal.find("+blur") == std::string::npos || journal.starts_with("+grade *grade +blur"))
            << journal;
        InInitMgr::finalize();
        std::string const end = takeJournal();
        EXPECT_EQ(isLoaded, end == "-blur -grade") << end;
    });
}

} // namespace
