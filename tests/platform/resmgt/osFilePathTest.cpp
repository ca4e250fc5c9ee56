#include "resmgt/osFilePath.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(OsFilePath, TellsItsParts) {
    struct {
        char const *path, *directory, *fileName, *baseName, *extension;
        bool isAbsolute;
    } const rows[] = {{"/a/b/x.op.so", "/a/b", "x.op.so", "x.op", "so", true}, {"x.op", "", "x.op", "x", "op", false},
        {"a.d/x", "a.d", "x", "x", "", false}, {"/x.y", "/", "x.y", "x", "y", true}, {"/", "/", "", "", "", true},
        {"", "", "", "", "", false}, {"a/b/", "a", "b", "b", "", false},
        {"a/.profile", "a", ".profile", ".profile", "", false}, {"a/..", "a", "..", "..", "", false},
        {"x.", "", "x.", "x", "", false}};
    for (auto const& row : rows) {
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
    struct {
        char const *directory, *path, *expected;
    } const rows[] = {{"a/", "b/c", "a/b/c"}, {"/", "b", "/b"}, {"", "b", "b"}, {"a", "/b", "/b"}, {"a", "", "a"}};
    for (auto const& row : rows)
        EXPECT_EQ(row.expected, (OsFilePath(row.directory) + row.path).getPath());
    EXPECT_EQ("a/x.io.so", OsFilePath("a/x.io").withExtension("so").getPath());
}

TEST(OsFilePath, ComparesAsTheSystemDoes) {
    LiString names;
    for (OsFilePath const& path : Set<OsFilePath>{"b", "a/", "a", "A", "a/b"})
        names += path.getPath() + " ";
    EXPECT_EQ("A a a/b b ", names);
    EXPECT_LT(OsFilePath("a").compare("b"), 0);
}

} // namespace
