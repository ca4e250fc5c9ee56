#include "resmgt/osFile.h"
#include "resmgt/osFilePath.h"
#include "resmgt/osFsUtils.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace {

using namespace Ko;
using KoTest::TemporaryFolder;

TEST(OsFilePath, HasDrivesServersAndBothSeparators) {
    struct Row {
        char const *path, *text, *parts;
        bool isAbsolute;
    };
    for (Row const& row : {Row{R"(C:\a\b\x.op.dll)", R"(C:\a\b\x.op.dll)", R"(C:\a\b|x.op.dll|x.op|dll)", true},
             Row{"C:/", "C:/", "C:/|||", true}, Row{"c:/a/", "c:/a", "c:/|a|a|", true},
             Row{"C:x", "C:x", "C:|x|x|", false},
             Row{R"(\\server\share\x)", R"(\\server\share\x)", R"(\\server\share|x|x|)", true},
             Row{"/a", "/a", "/|a|a|", true}, Row{R"(a\.profile)", R"(a\.profile)", "a|.profile|.profile|", false},
             Row{"", "", "|||", false}}) {
        OsFilePath const path = row.path;
        EXPECT_EQ(row.text, path.getPath());
        EXPECT_EQ(row.parts, path.getDirectory().getPath() + "|" + path.getFileName().getPath() + "|" +
                                 path.getBaseName() + "|" + path.getExtension());
        EXPECT_EQ(row.isAbsolute, path.isAbsolute()) << row.path;
    }
    EXPECT_EQ("a/b", (OsFilePath("a") + "b").getPath());
    EXPECT_EQ("C:/b", (OsFilePath("a") + "C:/b").getPath());
}

TEST(OsFilePath, ComparesWithoutRegardToCase) {
    LiString names;
    for (OsFilePath const& path : Set<OsFilePath>{"b", "a/", "a", "A", "a/b", R"(A\B)", "gr\xC3\xBCn", "GR\xC3\x9CN"})
        names += path.getPath() + " ";
    EXPECT_EQ("a a/b b gr\xC3\xBCn ", names);
}

class OsFsUtilsTest : public testing::Test {
protected:
    OsFilePath path(LiString const& name) const { return OsFilePath((folder / "").string()) + OsFilePath(name); }

    TemporaryFolder folder;
};

// Names that the machine's code page cannot write, and paths above the system's ordinary limit.
TEST_F(OsFsUtilsTest, ReadsReplacesAndListsWhateverTheName) {
    LiString const name = "gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8E\xA8.op";
    OsFile::replace(path(name), "old");
    OsFile::replace(path(name), LiString(100000, 'x'));
    EXPECT_EQ(LiString(100000, 'x'), OsFile::read(path(name)));
    auto const info = OsFile::getInfo(path(name));
    ASSERT_TRUE(info);
    EXPECT_EQ(100000u, info->size);
    EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - info->modified), std::chrono::hours(1));
    OsFile::replace(path("b.op"), "");
    Vector<LiString> names;
    for (OsFilePath const& child : OsFsUtils::getChildren(path(""), OsWildcardFilter(LiString("*.op"))))
        names.push_back(child.getFileName().getPath());
    EXPECT_EQ((Vector<LiString>{"b.op", name}), names);
    EXPECT_EQ(2, folder.entries()) << "no temporary file is left";

    std::wstring deep = L"\\\\?\\" + std::filesystem::absolute(folder / "").wstring();
    LiString inside;
    for (int level = 0; level < 8; ++level, ::CreateDirectoryW(deep.c_str(), nullptr)) {
        deep += std::wstring(40, L'd') + L"\\";
        inside += LiString(40, 'd') + "/";
    }
    OsFile::replace(path(inside + "x"), "deep");
    EXPECT_EQ("deep", OsFile::read(path(inside + "x")));
    EXPECT_EQ(1u, OsFsUtils::getChildren(path(inside), OsWildcardFilter(L"*")).size());
}

TEST_F(OsFsUtilsTest, SharesFilesAndReplacesThemAsAWholeOrNotAtAll) {
    LiString const file = path("a").getPath();
    folder.write("a", "old");
    HANDLE const reader =
        ::CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ("old", OsFile::read(file));
    EXPECT_THROW(OsFile::replace(file, "new"), OsFileEx::ExInvalidPath) << "another program uses it";
    EXPECT_EQ("old", folder.read("a"));
    ::CloseHandle(reader);
    OsFile::replace(file, "new");
    EXPECT_EQ("new", folder.read("a"));
    EXPECT_EQ(1, folder.entries());
    for (LiString const& bad : {path("").getPath(), path("missing/x").getPath(), file + LiString(1, '\0')})
        EXPECT_THROW(OsFile::replace(bad, "y"), OsFileEx::ExInvalidPath) << bad;
    for (LiString const& bad : {path("").getPath(), path("missing").getPath()})
        EXPECT_THROW(static_cast<void>(OsFile::read(bad)), OsFileEx::ExInvalidPath) << bad;
    EXPECT_NE(LiString::npos, KoTest::messageOf([&] {
        return OsFsUtils::getChildren(file, OsWildcardFilter(L"*"));
    }).find("Not a directory"));
    EXPECT_FALSE(OsFsUtils::fileExists(""));
}

TEST_F(OsFsUtilsTest, MakesPathsAbsolute) {
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    EXPECT_TRUE(OsFsUtils::getAbsolute("./x/./y").getPath().ends_with("/x/y"));
    EXPECT_TRUE(OsFsUtils::getAbsolute("x").isAbsolute());
    EXPECT_EQ("C:/x", OsFsUtils::getAbsolute("C:/x").getPath());
    std::filesystem::current_path(before);
}

} // namespace
