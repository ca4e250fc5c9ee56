#include "resmgt/osFile.h"
#include "resmgt/osFilePath.h"
#include "resmgt/osFsUtils.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::TemporaryFolder;
using std::filesystem::create_symlink;

TEST(OsFilePath, TellsItsParts) {
    for (auto const& [text, parts] :
        std::vector<std::pair<char const*, char const*>>{{"/a/b/x.op.so", "/a/b|x.op.so|x.op|so"},
            {"x.op", "|x.op|x|op"}, {"a.d/x", "a.d|x|x|"}, {"/x.y", "/|x.y|x|y"}, {"/", "/|||"}, {"", "|||"},
            {"a/b/", "a|b|b|"}, {"a/.profile", "a|.profile|.profile|"}, {"a/..", "a|..|..|"}, {"x.", "|x.|x|"}}) {
        OsFilePath const path = text;
        EXPECT_EQ(parts, path.getDirectory().getPath() + "|" + path.getFileName().getPath() + "|" + path.getBaseName() +
                             "|" + path.getExtension());
        EXPECT_EQ(*text == '/', path.isAbsolute()) << text;
    }
}

TEST(OsFilePath, JoinsAndExtends) {
    for (auto const& [directory, path, expected] : std::vector<std::tuple<char const*, char const*, char const*>>{
             {"a/", "b/c", "a/b/c"}, {"/", "b", "/b"}, {"", "b", "b"}, {"a", "/b", "/b"}, {"a", "", "a"}})
        EXPECT_EQ(expected, (OsFilePath(directory) + path).getPath());
    EXPECT_EQ("a/x.io.so", OsFilePath("a/x.io").withExtension("so").getPath());
}

TEST(OsFilePath, ComparesAsTheSystemDoes) {
    LiString names;
    for (OsFilePath const& path : Set<OsFilePath>{"b", "a/", "a", "A", "a/b"})
        names += path.getPath() + " ";
    EXPECT_EQ("A a a/b b ", names);
    EXPECT_LT(OsFilePath("a").compare("b"), 0);
}

TEST(OsWildcardFilter, MatchesWholeNames) {
    for (auto const& [pattern, name, expected] : std::vector<std::tuple<char const*, char const*, bool>>{{"", "", true},
             {"", "a", false}, {"*", "", true}, {"**", "ab", true}, {"?*?", "a", false}, {"?*?", "ab", true},
             {"*.op.so", "blur.op.so.bak", false}, {"*.op.so", "Xop.so", false}, {"*.op.so", "a.op.op.so", true},
             {"a*b*c", "abbbcbc", true}, {"a*b*c", "abbbcb", false}, {"[a]", "a", false}, {"A", "a", false},
             {"gr?n", "gr\xC3\xBCn", true}, {"gr\xC3\xBC*", "gr\xC3\xBCn", true}, {"\xC3\xBC", "\xC3\xB6", false},
             {"?", "\xF0\x9F\x8E\xA8", true}, {"??", "\xE2\x82", true}, {"\xFF", "\xFE", false},
             {"*\xBC", "\xC3\xBC", false}, {"?", "\xE0\x80\xAF", false}}) {
        EXPECT_EQ(expected, OsWildcardFilter(LiString(pattern)).matches(name)) << pattern << " and " << name;
    }
    EXPECT_TRUE(OsWildcardFilter(L"?r\u00fc*").matches("gr\xC3\xBCn"));
    EXPECT_FALSE(OsWildcardFilter(L"\u00c3*").matches("\xC3\xBC"));
}

TEST(OsWildcardFilter, TakesNoExponentialTime) {
    LiString pattern;
    for (int stars = 0; stars < 50; ++stars)
        pattern += "*a";
    EXPECT_FALSE(OsWildcardFilter(pattern + "b").matches(LiString(5000, 'a')));
}

class OsFsUtilsTest : public testing::Test {
protected:
    OsFsUtilsTest() {
        folder.write("b.op", "12345");
        folder.write("a.op", "");
        folder.write("c.gen", "");
        folder.write("d.op/inner.op", "");
        create_symlink("b.op", folder / "link.op");
        create_symlink("no such file", folder / "dangling.op");
    }
    OsFilePath path(LiString const& name) const { return (folder / name).string(); }

    TemporaryFolder folder;
};

TEST_F(OsFsUtilsTest, LooksThroughLinks) {
    for (auto const& [name, exists, isDirectory, size] : std::vector<std::tuple<LiString, bool, bool, std::uint64_t>>{
             {"a.op", true, false, 0}, {"link.op", true, false, 5}, {"dangling.op", false, false, 0},
             {"d.op", true, true, 0}, {"nothing", false, false, 0}, {"b.op/below a file", false, false, 0},
             {LiString("a.op\0", 5), false, false, 0}}) {
        EXPECT_EQ(exists, OsFsUtils::fileExists(path(name))) << name;
        EXPECT_EQ(isDirectory, OsFsUtils::isDirectory(path(name))) << name;
        auto const info = OsFile::getInfo(path(name));
        ASSERT_EQ(exists, info.has_value()) << name;
        EXPECT_EQ(size, info && !isDirectory ? info->size : 0) << name;
        EXPECT_EQ(isDirectory, info && info->isDirectory) << name;
    }
    std::filesystem::last_write_time(folder / "b.op", std::filesystem::file_time_type::clock::now());
    auto const age = std::chrono::system_clock::now() - OsFile::getInfo(path("b.op"))->modified;
    EXPECT_LT(std::chrono::abs(age), std::chrono::hours(1));
}

TEST_F(OsFsUtilsTest, ListsTheChildrenThatMatchInTheOrderOfTheirNames) {
    auto const names = [&](char const* pattern) {
        LiString result;
        for (OsFilePath const& child : OsFsUtils::getChildren(path(""), OsWildcardFilter(LiString(pattern)))) {
            EXPECT_EQ(path(""), child.getDirectory());
            result += child.getFileName().getPath() + " ";
        }
        return result;
    };
    EXPECT_EQ("a.op b.op d.op dangling.op link.op ", names("*.op"));
    EXPECT_EQ("a.op b.op c.gen d.op dangling.op link.op ", names("*"));
}

TEST_F(OsFsUtilsTest, ReplacesAFileAsAWholeOrNotAtAll) {
    using std::filesystem::perms;
    std::filesystem::permissions(folder / "b.op", perms::owner_all);
    LiString const content(100000, 'x');
    OsFile::replace(path("link.op"), content);
    EXPECT_EQ(content, OsFile::read(path("b.op")));
    EXPECT_EQ(perms::owner_all, std::filesystem::status(folder / "b.op").permissions());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.op"));
    OsFile::replace(path("dangling.op"), "now there");
    EXPECT_EQ("now there", folder.read("no such file"));
    EXPECT_EQ(7, folder.entries()); // no temporary file is left
    for (LiString const& bad :
        {path("d.op").getPath(), path("missing/x").getPath(), path("b.op").getPath() + LiString(1, '\0')})
        EXPECT_THROW(OsFile::replace(bad, "y"), OsFileEx::ExInvalidPath) << bad;
    for (LiString const& bad : {path("d.op").getPath(), path("missing").getPath(), LiString("/dev/zero")})
        EXPECT_THROW(static_cast<void>(OsFile::read(bad)), OsFileEx::ExInvalidPath) << bad;
    EXPECT_EQ(7, folder.entries());
}

TEST_F(OsFsUtilsTest, SaysWhyADirectoryCannotBeListed) {
    for (auto const& [name, why] : std::vector<std::pair<LiString, char const*>>{
             {"b.op", "Not a directory."}, {LiString("d.op\0", 5), "It contains a zero byte."}})
        EXPECT_EQ("OsFsUtils::getChildren: Invalid path \"" + path(name.c_str()).getPath() + "\": " + why,
            KoTest::messageOf([&, &in = name] { return OsFsUtils::getChildren(path(in), OsWildcardFilter(L"*")); }));
}

} // namespace
