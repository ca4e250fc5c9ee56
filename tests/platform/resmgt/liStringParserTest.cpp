#include "resmgt/liStringParser.h"
#include "base/exBase.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiStringParser, ListsThePiecesThatAreNotEmpty) {
    struct Row {
        char const* text;
        char const* separator;
        Vector<LiString> expected;
    };
    for (Row const& row : {Row{"", ",", {}}, Row{",,", ",", {}}, Row{"a", ",", {"a"}},
             Row{",,a,,b c ,", ",", {"a", "b c "}}, Row{"a::b:c", "::", {"a", "b:c"}}, Row{"a:::b", "::", {"a", ":b"}}})
        EXPECT_EQ(row.expected, LiStringParser::splitList(row.text, row.separator)) << row.text;
    EXPECT_THROW(LiStringParser::splitList("a", ""), ExAssertionFailed);
}

TEST(LiStringParser, SplitsAtTheFirstSeparator) {
    struct Row {
        char const* text;
        bool isSplit;
        char const* head;
        char const* tail;
    };
    for (Row const& row : {Row{"a=b", true, "a", "b"}, Row{"a=b=c", true, "a", "b=c"}, Row{"a=", true, "a", ""},
             Row{"=b", true, "", "b"}, Row{"a", false, "a", ""}, Row{"", false, "", ""}}) {
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
