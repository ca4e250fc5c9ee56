#include "resmgt/osSharedLib.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

std::filesystem::path const libraries = KO_TEST_PLUG_INS;

int answerOf(OsSharedLib const& library) {
    return reinterpret_cast<int (*)()>(library.getSymbol("koAnswer"))();
}

std::string reasonOf(OsFilePath const& path) {
    try {
        OsSharedLib::open(path);
    } catch (OsSharedLibEx const& error) {
        return error.getReason();
    }
    return "it was opened";
}

TEST(OsSharedLib, StaysOpenWithoutAHandle) {
    OsFilePath const path = (libraries / "answer.so").string();
    auto const answer = reinterpret_cast<int (*)()>(OsSharedLib::open(path).getSymbol("koAnswer"));
    EXPECT_EQ(42, answer());
    OsSharedLib const again = OsSharedLib::open(path);
    EXPECT_EQ(path, again.getPath());
    EXPECT_EQ(reinterpret_cast<void*>(answer), again.getSymbol("koAnswer")) << "not opened again";
    EXPECT_THROW(again.getSymbol("koQuestion"), OsSharedLibEx);
}

TEST(OsSharedLib, OpensABareNameInTheCurrentDirectoryAndNowhereElse) {
    inChildProcess([] {
        TemporaryFolder const folder;
        std::filesystem::copy_file(libraries / "answer.so", folder / "bare.so");
        std::filesystem::current_path(folder / "");
        EXPECT_EQ(42, answerOf(OsSharedLib::open("bare.so")));
        EXPECT_THROW(OsSharedLib::open("libc.so.6"), OsSharedLibEx);
    });
}

TEST(OsSharedLib, PassesOnWhatTheSystemSaysWithThePath) {
    TemporaryFolder const folder;
    folder.write("text.so", std::string(1000, 'x'));
    folder.write("short.so", "x");
    folder.write("folder.so/file", "");
    std::string const foreign("\x7F"
                              "ELF\x01\x01\x01",
        7); // of a 32-bit machine
    folder.write("foreign.so", foreign + std::string(2000, '\0'));
    std::filesystem::copy_file(libraries / "unresolved.op.so", folder / "unresolved.so");
    std::filesystem::copy_file(libraries / "orphan.op.so", folder / "orphan.so");
    struct Row {
        char const* name;
        char const* words;
    };
    for (Row const& row : {Row{"text.so", "invalid ELF header"}, Row{"short.so", "file too short"},
             Row{"folder.so", "directory"}, Row{"foreign.so", "wrong ELF class"}, Row{"missing.so", "No such file"},
             Row{"unresolved.so", "koNobodyHasThis"}, Row{"orphan.so", "libplugInAbsent.so: cannot open"}}) {
        std::string const path = (folder / row.name).string();
        std::string const reason = reasonOf(path);
        EXPECT_TRUE(reason.starts_with(path + ": ")) << reason;
        EXPECT_NE(std::string::npos, reason.find(row.words)) << reason;
    }
}

// At whatever byte a library ends too early: never a crash, and never more than an exception.
TEST(OsSharedLib, RefusesALibraryThatIsCutOff) {
    TemporaryFolder const folder;
    auto const whole = std::filesystem::file_size(libraries / "answer.so");
    for (std::uintmax_t const size : {whole - 1, whole * 3 / 4, whole / 2, whole / 4, std::uintmax_t{4096},
             std::uintmax_t{500}, std::uintmax_t{64}, std::uintmax_t{63}, std::uintmax_t{4}}) {
        auto const path = folder / (std::to_string(size) + ".so");
        std::filesystem::copy_file(libraries / "answer.so", path);
        std::filesystem::resize_file(path, size);
        EXPECT_TRUE(reasonOf(path.string()).starts_with(path.string() + ": ")) << size;
    }
}

} // namespace
