#include "resmgt/xmlWriter.h"
#include "base/exBase.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;

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
    struct {
        std::string text, expected;
    } const rows[] = {{"<a href=\"b\">'&'</a>", "&lt;a href=&quot;b&quot;&gt;&apos;&amp;&apos;&lt;/a&gt;"},
        {"tab\tline\nreturn\r", "tab\tline\nreturn&#13;"}, {std::string("\0\x1B", 2), bad + bad},
        {"\xC3\xBC \xE2\x82\xAC \xF0\x9F\x8E\xA8", "\xC3\xBC \xE2\x82\xAC \xF0\x9F\x8E\xA8"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF", bad + bad}, {"\x80", bad}, {"\xC3", bad}, {"\xC3(", bad + "("},
        {"\xC0\xAF", bad + bad}, {"\xED\xA0\x80", bad + bad + bad}, {"\xF5\x80\x80\x80", bad + bad + bad + bad}};
    for (auto const& row : rows) {
        std::ostringstream stream;
        XmlWriter(stream, 0).writeTag("t", row.text);
        EXPECT_EQ("<t>" + row.expected + "</t>\n", stream.str());
    }
}

} // namespace
