#include "base/exBase.h"
#include "resmgt/liStringParser.h"
#include "resmgt/xmlWriter.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;

TEST(LiStringParser, ListsThePiecesThatAreNotEmpty) {
    for (auto const& [text, separator, expected] : std::vector<std::tuple<char const*, char const*, Vector<LiString>>>{
             {"", ",", {}}, {",,", ",", {}}, {",,a,,b c ,", ",", {"a", "b c "}}, {"a:::b", "::", {"a", ":b"}}})
        EXPECT_EQ(expected, LiStringParser::splitList(text, separator)) << text;
    EXPECT_THROW(LiStringParser::splitList("a", ""), ExAssertionFailed);
}

TEST(LiStringParser, SplitsAtTheFirstSeparator) {
    for (auto const& [text, isSplit, expectedHead, expectedTail] :
        std::vector<std::tuple<char const*, bool, char const*, char const*>>{
            {"a=b=c", true, "a", "b=c"}, {"a=", true, "a", ""}, {"=b", true, "", "b"}, {"a", false, "a", ""}}) {
        LiString head = "untouched", tail = head;
        EXPECT_EQ(isSplit, LiStringParser::splitString(text, "=", head, tail)) << text;
        EXPECT_EQ(expectedHead, head) << text;
        EXPECT_EQ(expectedTail, tail) << text;
    }
    LiString rest = "a=b=c";
    LiString head;
    LiStringParser::splitString(rest, "=", head, rest);
    EXPECT_EQ("b=c", rest) << "into the text itself";
    EXPECT_THROW(LiStringParser::splitString("a", "", head, rest), ExAssertionFailed);
}

TEST(XmlWriter, IndentsEachLevelAndRefusesToCloseWhatIsNotOpen) {
    std::ostringstream stream;
    XmlWriter writer(stream, 2);
    writer.openTag("a");
    writer.openTag("b");
    writer.writeTag("c", "text");
    writer.writeTag("d", "");
    writer.closeTag();
    writer.closeTag();
    EXPECT_EQ("<a>\n  <b>\n    <c>text</c>\n    <d></d>\n  </b>\n</a>\n", stream.str());
    EXPECT_THROW(writer.closeTag(), ExAssertionFailed);
}

TEST(XmlWriter, EscapesTextAndReplacesWhatXmlCannotHold) {
    std::string const bad = "\xEF\xBF\xBD";
    for (auto const& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"<a href=\"b\">'&'</a>", "&lt;a href=&quot;b&quot;&gt;&apos;&amp;&apos;&lt;/a&gt;"},
             {"tab\tline\nreturn\r", "tab\tline\nreturn&#13;"}, {std::string("\0\x1B", 2), bad + bad},
             {"\xC3\xBC \xE2\x82\xAC \xF0\x9F\x8E\xA8", "\xC3\xBC \xE2\x82\xAC \xF0\x9F\x8E\xA8"},
             {"\xEF\xBF\xBE\xEF\xBF\xBF", bad + bad}, {"\x80", bad}, {"\xC3", bad}, {"\xC3(", bad + "("},
             {"\xC0\xAF", bad + bad}, {"\xED\xA0\x80", bad + bad + bad}, {"\xF5\x80\x80\x80", bad + bad + bad + bad}}) {
        std::ostringstream stream;
        XmlWriter(stream, 0).writeTag("t", text);
        EXPECT_EQ("<t>" + expected + "</t>\n", stream.str());
    }
}

} // namespace
