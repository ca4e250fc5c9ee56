#include "resmgt/liStringParser.h"
#include "base/exBase.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiStringParser, ListsThePiecesThatAreNotEmpty) {
    struct {
        char const* text;
        char const* separator;
        Vector<LiString> expected;
    } const rows[] = {{"", ",", {}}, {",,", ",", {}}, {",,a,,b c ,", ",", {"a", "b c "}}, {"a:::b", "::", {"a", ":b"}}};
    for (auto const& row : rows)
        EXPECT_EQ(row.expected, LiStringParser::splitList(row.text, row.separator)) << row.text;
    EXPECT_THROW(LiStringParser::splitList("a", ""), ExAssertionFailed);
}

TEST(LiStringParser, SplitsAtTheFirstSeparator) {
    struct {
        char const* text;
        bool isSplit;
        char const* head;
        char const* tail;
    } const rows[] = {{"a=b=c", true, "a", "b=c"}, {"a=", true, "a", ""}, {"=b", true, "", "b"}, {"a", false, "a", ""}};
    for (auto const& row : rows) {
        LiString head = "untouched", tail = head;
        EXPECT_EQ(row.isSplit, LiStringParser::splitString(row.text, "=", head, tail)) << row.text;
        EXPECT_EQ(row.head, head) << row.text;
        EXPECT_EQ(row.tail, tail) << row.text;
    }
    LiString rest = "a=b=c";
    LiString head;
    LiStringParser::splitString(rest, "=", head, rest);
    EXPECT_EQ("b=c", rest) << "into the text itself";
    EXPECT_THROW(LiStringParser::splitString("a", "", head, rest), ExAssertionFailed);
}

} // namespace
