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
    constexpr char const* bad = "\xEF\xBF\xBD";
    struct Row {
        std::string text;
        std::string expected;
    };
    for (Row const& row :
        {Row{"<a href=\"b\">'&'</a>", "&lt;a href=&quot;b&quot;&gt;&apos;&amp;&apos;&lt;/a&gt;"},
            Row{"tab\tline\nreturn\r", "tab\tline\nreturn&#13;"}, Row{std::string("\0\x1B", 2), std::string(bad) + bad},
            Row{"gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8E\xA8", "gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8E\xA8"},
            Row{"\xEF\xBF\xBD\xEF\xBF\xBE\xEF\xBF\xBF", std::string(bad) + bad + bad}, Row{"\x80", bad},
            Row{"\xC3", bad}, Row{"\xC3(", std::string(bad) + "("}, Row{"\xC0\xAF", std::string(bad) + bad},
            Row{"\xED\xA0\x80", std::string(bad) + bad + bad},
            Row{"\xF5\x80\x80\x80", std::string(bad) + bad + bad + bad}}) {
        std::ostringstream stream;
        XmlWriter(stream, 0).writeTag("t", row.text);
        EXPECT_EQ("<t>" + row.expected + "</t>\n", stream.str());
    }
}

} // namespace
