#include "resmgt/osFsUtils.h"
#include "resmgt/osFile.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using KoTest::TemporaryFolder;
using std::filesystem::create_symlink;

TEST(OsWildcardFilter, MatchesWholeNames) {
    struct Row {
        char const* pattern;
        char const* name;
        bool expected;
    };
    for (Row const& row : {Row{"", "", true}, Row{"", "a", false}, Row{"*", "", true}, Row{"**", "ab", true},
             Row{"?", "", false}, Row{"?*?", "a", false}, Row{"?*?", "ab", true}, Row{"*.op.so", "blur.op.so", true},
             Row{"*.op.so", "blur.op.so.bak", false}, Row{"*.op.so", "Xop.so", false},
             Row{"*.op.so", "a.op.op.so", true}, Row{"a*b*c", "abbbcbc", true}, Row{"a*b*c", "abbbcb", false},
             Row{"*ab", "aab", true}, Row{"*a?c", "abcadc", true}, Row{"[a]", "a", false}, Row{"A", "a", false},
             Row{"gr?n", "gr\xC3\xBCn", true}, Row{"gr\xC3\xBC*", "gr\xC3\xBCn", true},
             Row{"\xC3\xBC", "\xC3\xB6", false}, Row{"?", "\xF0\x9F\x8E\xA8", true}, Row{"?", "\xE2\x82\xAC", true},
             Row{"??", "\xE2\x82", true}, Row{"?", "\xFF", true}, Row{"\xFF", "\xFE", false},
             Row{"a\xC3?", "a\xC3z", true}, Row{"?", "\xE0\x80\xAF", false}, Row{"???", "\xED\xA0\x80", true},
             Row{"\x80", "\xF4\x90\x82\x80", false}}) {
        EXPECT_EQ(row.expected, OsWildcardFilter(LiString(row.pattern)).matches(row.name))
            << row.pattern << " and " << row.name;
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
    struct Row {
        char const* name;
        bool exists;
        bool isDirectory;
        std::uint64_t size;
    };
    for (Row const& row : {Row{"a.op", true, false, 0}, Row{"b.op", true, false, 5}, Row{"link.op", true, false, 5},
             Row{"dangling.op", false, false, 0}, Row{"d.op", true, true, 0}, Row{"nothing", false, false, 0},
             Row{"b.op/below a file", false, false, 0}}) {
        EXPECT_EQ(row.exists, OsFsUtils::fileExists(path(row.name))) << row.name;
        EXPECT_EQ(row.isDirectory, OsFsUtils::isDirectory(path(row.name))) << row.name;
        auto const info = OsFile::getInfo(path(row.name));
        ASSERT_EQ(row.exists, info.has_value()) << row.name;
        if (!info) continue;
        EXPECT_EQ(row.isDirectory, info->isDirectory) << row.name;
        EXPECT_EQ(row.size, row.isDirectory ? 0 : info->size) << row.name;
    }
    std::filesystem::last_write_time(folder / "b.op", std::filesystem::file_time_type::clock::now());
    auto const age = std::chrono::system_clock::now() - OsFile::getInfo(path("b.op"))->modified;
    EXPECT_LT(std::chrono::abs(age), std::chrono::hours(1));
}

TEST_F(OsFsUtilsTest, ListsTheChildrenThatMatchInTheOrderOfTheirNames) {
    auto const names = [&](char const* pattern) {
        Vector<LiString> result;
        for (OsFilePath const& child : OsFsUtils::getChildren(path(""), OsWildcardFilter(LiString(pattern)))) {
            EXPECT_EQ(path(""), child.getDirectory());
            result.push_back(child.getFileName().getPath());
        }
        return result;
    };
    EXPECT_EQ((Vector<LiString>{"a.op", "b.op", "d.op", "dangling.op", "link.op"}), names("*.op"));
    EXPECT_EQ((Vector<LiString>{"c.gen"}), names("c.gen"));
    EXPECT_EQ((Vector<LiString>{}), names("."));
    EXPECT_EQ(6u, names("*").size());
}

TEST_F(OsFsUtilsTest, SaysWhyADirectoryCannotBeListed) {
    for (char const* const name : {"nothing", "b.op"})
        try {
            OsFsUtils::getChildren(path(name), OsWildcardFilter(L"*"));
            ADD_FAILURE() << name;
        } catch (OsFileEx::ExInvalidPath const& error) {
            LiString const start = "OsFsUtils::getChildren: Invalid path \"" + path(name).getPath() + "\": ";
            EXPECT_TRUE(error.getReason().starts_with(start)) << error.what();
            EXPECT_LT(start.size() + 1, error.getReason().size());
        }
}

} // namespace
