#include "resmgt/osSharedLib.h"
#include "resmgt/src/windows/systemError.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace {

using namespace Ko;
using namespace KoTest;

std::filesystem::path const libraries = KO_TEST_PLUG_INS;

std::string reasonOf(OsFilePath const& path) {
    return messageOf([&] { OsSharedLib::open(path); });
}

int callOf(OsSharedLib const& library, char const* name) {
    return reinterpret_cast<int (*)()>(library.getSymbol(name))();
}

TEST(OsSharedLib, StaysOpenWithoutAHandle) {
    OsFilePath const path = (libraries / "answer.dll").string();
    EXPECT_EQ(42, callOf(OsSharedLib::open(path), "koAnswer"));
    OsSharedLib const again = OsSharedLib::open(path);
    EXPECT_EQ(path, again.getPath());
    for (std::string const& name : {std::string("koQuestion"), std::string("koAnswer\0", 9)})
        EXPECT_THROW(static_cast<void>(again.getSymbol(name)), OsSharedLibEx);
}

TEST(OsSharedLib, FindsWhatItNeedsBesideIt) {
    TemporaryFolder const folder;
    for (auto const* const name : {"grandOrphan.op.dll", "absent/libplugInOrphan.dll", "absent/libplugInAbsent.dll"})
        std::filesystem::copy_file(libraries / name, folder / std::filesystem::path(name).filename().string());
    EXPECT_EQ(42, callOf(OsSharedLib::open((folder / "grandOrphan.op.dll").string()), "koGrandOrphan"));
}

TEST(OsSharedLib, SaysWithThePathWhyItIsNotOpened) {
    TemporaryFolder const folder;
    folder.write("text.dll", std::string(1000, 'x'));
    folder.write("folder.dll/file", "");
    std::filesystem::copy_file(libraries / "orphan.op.dll", folder / "orphan.dll");
    for (auto const& [name, words] : std::vector<std::pair<std::string, std::string>>{
             {"text.dll", describeError(ERROR_BAD_EXE_FORMAT, "text.dll").substr(0, 8)}, {"folder.dll", ": "},
             {"missing.dll", describeError(ERROR_MOD_NOT_FOUND)}, {std::string("x.dll\0", 6), "zero byte"},
             {"orphan.dll", "it needs libplugInAbsent.dll"}}) {
        std::string const path = OsFilePath((folder / "").string()).getPath() + "/" + name;
        std::string const reason = reasonOf(path);
        EXPECT_TRUE(reason.starts_with(path.c_str() + std::string(": "))) << reason;
        EXPECT_NE(std::string::npos, reason.find(words)) << reason;
    }
}

TEST(OsSharedLib, NamesALibraryThatIsCutOff) {
    TemporaryFolder const folder;
    std::filesystem::copy_file(libraries / "orphan.op.dll", folder / "orphan.dll");
    auto const needed = folder / "libplugInAbsent.dll";
    std::filesystem::copy_file(libraries / "absent/libplugInAbsent.dll", needed);
    std::filesystem::resize_file(needed, 5000);
    std::string const reason = reasonOf((folder / "orphan.dll").string());
    EXPECT_NE(std::string::npos, reason.find("libplugInAbsent.dll: file is cut off")) << reason;
    for (std::uintmax_t const size :
        {std::uintmax_t{4096}, std::uintmax_t{500}, std::uintmax_t{63}, std::uintmax_t{4}}) {
        auto const path = folder / (std::to_string(size) + ".dll");
        std::filesystem::copy_file(libraries / "answer.dll", path);
        std::filesystem::resize_file(path, size);
        EXPECT_TRUE(reasonOf(path.string()).starts_with(path.string() + ": ")) << size;
    }
}

TEST(OsSharedLib, ReadsSectionsWithLongAndShortNames) {
    std::string const path = (libraries / "answer.dll").string();
    EXPECT_TRUE(OsSharedLib::readSection(path, ".text", 1 << 20));
    EXPECT_THROW(static_cast<void>(OsSharedLib::readSection(path, ".text", 7)), OsSharedLibEx);
    EXPECT_FALSE(OsSharedLib::readSection(path, ".koplugin", 7));
    TemporaryFolder const folder;
    EXPECT_FALSE(OsSharedLib::readSection(folder.write("text.dll", "MZ").string(), ".text", 7));
    EXPECT_FALSE(OsSharedLib::readSection((folder / "missing.dll").string(), ".text", 7));
}

} // namespace
