#include "resmgt/msgServer.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/temporaryFolder.h"
#include "variables.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

class MsgServerTest : public testing::Test {
protected:
    MsgServerTest() {
        KoTest::setVariable("KO_INSTALL_DIR", (folder / "").string());
        folder.write("messages/test.msg", "# messages\n"
                                          "\n"
                                          "MSG_PLAIN \"It works.\"\n"
                                          "  MSG_ORDER   \"%2 before %1, 100%% of %3%\"  # and a comment\n"
                                          "MSG_ESCAPES \"\\\"a\\\\b\\\" # no comment\\nsecond\"\n"
                                          "MSG_UNQUOTED It fails.\n"
                                          "MSG_OPEN \"It never ends\n"
                                          "MSG_AFTER \"text\" more\n"
                                          "MSG_ALONE\n"
                                          "MSG_LAST \"last\"");
    }
    ~MsgServerTest() override { KoTest::unsetVariable("KO_INSTALL_DIR"); }

    TemporaryFolder folder;
};

TEST_F(MsgServerTest, FormatsTheTextsOfACatalogueAndShowsIdentifiersForTheOthers) {
    LogRecorder const log;
    MsgFileGuard const catalogue("test.msg");
    for (auto const& [id, substitutions, expected] :
        std::vector<std::tuple<char const*, Vector<LiString>, char const*>>{
            {"MSG_ORDER", {"x", "y"}, "y before x, 100% of %"},
            {"MSG_ESCAPES", {"unused"}, "\"a\\b\" # no comment\nsecond"},
            {"MSG_UNQUOTED", {"a", "b"}, "MSG_UNQUOTED: a, b"}, {"MSG_OPEN", {}, "MSG_OPEN"},
            {"MSG_AFTER", {}, "MSG_AFTER"}, {"MSG_ALONE", {}, "MSG_ALONE"}, {"MSG_LAST", {}, "last"},
            {"MSG_UNKNOWN", {"a"}, "MSG_UNKNOWN: a"}})
        EXPECT_EQ(expected, MsgSubscription(id).format(substitutions));
    ASSERT_EQ(4u, log.lines().size());
    EXPECT_NE(std::string::npos, log.lines()[0].find("test.msg:6: expected MSG_ID"));
}

TEST_F(MsgServerTest, KeepsWhatWasSubscribedWhileItsCatalogueWasOpenWhateverTheOrder) {
    folder.write("messages/other.msg", "MSG_OTHER \"other\"");
    MsgSubscription const before("MSG_LAST");
    auto test = std::make_unique<MsgFileGuard>("test.msg");
    MsgFileGuard const missing("no such file.msg");
    MsgFileGuard const other("other.msg");
    MsgServer::getInstance().subscribe("MSG_PLAIN");
    test.reset();
    EXPECT_EQ("MSG_LAST", before.format());
    EXPECT_EQ("It works.", MsgServer::getInstance().format("MSG_PLAIN"));
    EXPECT_EQ("other", MsgSubscription("MSG_OTHER").format());
    EXPECT_EQ("MSG_ESCAPES", MsgSubscription("MSG_ESCAPES").format());
}

TEST(MsgProtocol, WritesLinesUntilAHandlerIsSet) {
    inChildProcess(
        [] {
            Vector<LiString> shown;
            MsgProtocol::display(MsgError("disk full"));
            MsgProtocol::setHandler([&](Msg const& message) {
                shown.push_back((message.getSeverity() == Msg::Severity::Warning ? "W " : "E ") + message.getText());
                if (shown.size() == 1) MsgProtocol::display(MsgError("a second one from the handler"));
            });
            MsgProtocol::display(MsgWarning("slow"));
            EXPECT_EQ((Vector<LiString>{"W slow", "E a second one from the handler"}), shown);
            MsgProtocol::setHandler(nullptr);
            MsgProtocol::display(MsgWarning("slow again"));
        },
        "^error: disk full\nwarning: slow again\n$");
}

TEST(MsgProtocol, LogsWhatAHandlerThrows) {
    LogRecorder const log;
    MsgProtocol::setHandler([](Msg const&) { throw std::runtime_error("no display"); });
    MsgProtocol::display(MsgError("unseen"));
    MsgProtocol::setHandler(nullptr);
    EXPECT_EQ((std::vector<std::string>{"Errors:0 Displaying a message failed: no display"}), log.lines());
}

} // namespace
