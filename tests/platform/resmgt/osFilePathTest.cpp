#include "resmgt/osFilePath.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(OsFilePath, TellsItsParts) {
    struct Row {
        char const* path;
        char const* directory;
        char const* fileName;
        char const* baseName;
        char const* extension;
        bool isAbsolute;
    };
    for (Row const& row : {Row{"/a/b/x.op.so", "/a/b", "x.op.so", "x.op", "so", true},
             Row{"x.op", "", "x.op", "x", "op", false}, Row{"a.d/x", "a.d", "x", "x", "", false},
             Row{"/x.y", "/", "x.y", "x", "y", true}, Row{"/", "/", "", "", "", true}, Row{"", "", "", "", "", false},
             Row{"a/b/", "a", "b", "b", "", false}, Row{"a/.profile", "a", ".profile", ".profile", "", false},
             Row{".a.b", "", ".a.b", ".a", "b", false}, Row{"a/..", "a", "..", "..", "", false},
             Row{".", "", ".", ".", "", false}, Row{"x.", "", "x.", "x", "", false}}) {
        OsFilePath const path = row.path;
        EXPECT_EQ(row.directory, path.getDirectory().getPath()) << row.path;
        EXPECT_EQ(row.fileName, path.getFileName().getPath()) << row.path;
        EXPECT_EQ(row.baseName, path.getBaseName()) << row.path;
        EXPECT_EQ(row.extension, path.getExtension()) << row.path;
        EXPECT_EQ(row.isAbsolute, path.isAbsolute()) << row.path;
        EXPECT_EQ(*row.path == '\0', path.isEmpty()) << row.path;
    }
}

TEST(OsFilePath, JoinsAndExtends) {
    struct Row {
        char const* directory;
        char const* path;
        char const* expected;
    };
    for (Row const& row : {Row{"a", "b", "a/b"}, Row{"a/", "b/c", "a/b/c"}, Row{"/", "b", "/b"}, Row{"", "b", "b"},
             Row{"a", "/b", "/b"}, Row{"a", "", "a"}, Row{"", "", ""}})
        EXPECT_EQ(row.expected, (OsFilePath(row.directory) + row.path).getPath());
    EXPECT_EQ("a/x.io.so", OsFilePath("a/x.io").withExtension("so").getPath());
}

TEST(OsFilePath, ComparesAsTheSystemDoes) {
    Set<OsFilePath> const paths = {"b", "a/", "a", "A", "a/b"};
    Vector<LiString> names;
    for (OsFilePath const& path : paths)
        names.push_back(path.getPath());
    EXPECT_EQ((Vector<LiString>{"A", "a", "a/b", "b"}), names);
    EXPECT_LT(OsFilePath("a").compare("b"), 0);
    EXPECT_GT(OsFilePath("b").compare("a"), 0);
    EXPECT_EQ(OsFilePath("a/"), OsFilePath("a"));
}

} // namespace
