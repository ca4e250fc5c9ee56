#include "resmgt/osSharedLib.h"
#include "tests/support/caught.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

std::filesystem::path const libraries = KO_TEST_PLUG_INS;

auto answerOf(OsSharedLib const& library) {
    return reinterpret_cast<int (*)()>(library.getSymbol("koAnswer"));
}

std::string reasonOf(OsFilePath const& path) {
    return caught<OsSharedLibEx>([&] { OsSharedLib::open(path); }).getReason();
}

TEST(OsSharedLib, StaysOpenWithoutAHandle) {
    OsFilePath const path = (libraries / "answer.so").string();
    auto const answer = answerOf(OsSharedLib::open(path));
    EXPECT_EQ(42, answer());
    OsSharedLib const again = OsSharedLib::open(path);
    EXPECT_EQ(path, again.getPath());
    EXPECT_EQ(answer, answerOf(again)) << "not opened again";
    EXPECT_THROW(again.getSymbol("koQuestion"), OsSharedLibEx);
}

TEST(OsSharedLib, OpensABareNameInTheCurrentDirectoryAndNowhereElse) {
    inChildProcess([] {
        TemporaryFolder const folder;
        std::filesystem::copy_file(libraries / "answer.so", folder / "bare.so");
        std::filesystem::current_path(folder / "");
        EXPECT_EQ(42, answerOf(OsSharedLib::open("bare.so"))());
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
    for (auto const& [name, words] : std::vector<std::pair<char const*, char const*>>{{"text.so", "invalid ELF header"},
             {"short.so", "file too short"}, {"folder.so", "directory"}, {"foreign.so", "wrong ELF class"},
             {"missing.so", "No such file"}, {"unresolved.so", "koNobodyHasThis"},
             {"orphan.so", "libplugInAbsent.so: cannot open"}}) {
        std::string const path = (folder / name).string();
        std::string const reason = reasonOf(path);
        EXPECT_TRUE(reason.starts_with(path + ": ")) << reason;
        EXPECT_NE(std::string::npos, reason.find(words)) << reason;
    }
}

// At whatever byte a library ends too early: never a crash, and never more than an exception.
TEST(OsSharedLib, RefusesALibraryThatIsCutOff) {
    TemporaryFolder const folder;
    auto const whole = std::filesystem::file_size(libraries / "answer.so");
    for (std::uintmax_t const size :
        std::initializer_list<std::uintmax_t>{whole - 1, whole / 2, 4096, 500, 64, 63, 4}) {
        auto const path = folder / (std::to_string(size) + ".so");
        std::filesystem::copy_file(libraries / "answer.so", path);
        std::filesystem::resize_file(path, size);
        EXPECT_TRUE(reasonOf(path.string()).starts_with(path.string() + ": ")) << size;
    }
}

} // namespace
