#include "document/documentFile.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "host/layerFormats.h"
#include "plugIns/operators.h"
#include "tests/examples/compositor/window/windowTest.h"
#include "window/preview.h"

namespace {

using namespace compositor;
using namespace compositor::window;
using namespace KoTest;

class ExchangeTest : public WindowTest {};

TEST_F(ExchangeTest, APreviewIsShownAndLeavesNothing) {
    Ko::QtJobModel model;
    JobStarter jobs(model);
    SharedPicture const before = editor.document().layer("back").placed.picture;
    window.session().select({id("back")});
    ASSERT_NE(nullptr, findOperator("Invert"));
    auto preview = std::make_unique<Preview>(window.session(), jobs, findOperator("Invert"));
    preview->show({0, {"Invert"}});
    waitUntil([&] { return editor.document().layer("back").placed.picture != before; });
    EXPECT_EQ(QColor(55, 255, 255), shownAt(5, 5));
    EXPECT_EQ(0, steps()) << "not a step yet";
    preview.reset();
    EXPECT_EQ(before, editor.document().layer("back").placed.picture);
    EXPECT_EQ(0, steps());
    EXPECT_TRUE(editor.history()->isClean());
}

TEST_F(ExchangeTest, LayersTravelAsPicturesThroughOtherPrograms) {
    window.session().select({id("back"), id("front")});
    window.session().gestures().copy();
    Ko::DrFormats const copied = Ko::DrClipboard::getInstance().getContent()->getFormats();
    EXPECT_EQ("back\nfront", copied.make("text/plain;charset=utf-8").value_or(""));
    auto const items = Ko::SnSelection::create();
    importLayers(editor, copied, *items);
    ASSERT_EQ(1u, items->getCount());
    window.session().gestures().add(Ko::DrCarrier::create(items), "Drop");
    EXPECT_EQ((Size{230, 160}), editor.document().layer("Pasted").placed.picture->size()) << "what both cover";
    EXPECT_EQ(1, steps());
}

TEST_F(ExchangeTest, FilesOfOtherProgramsBecomeLayersAndOthersAreLeftOut) {
    editor.document().renderer().renderToFile(folder / "a b.png");
    ASSERT_TRUE(saveDocument(editor.document(), folder / "both.koc"));
    Ko::DrFormats files;
    files.add("text/uri-list", [this] {
        std::string const there = "file://" + (folder / "a").parent_path().string();
        return there + "/a%20b.png\r\n" + there + "/missing.png\r\n" + there +
               "/both.koc\r\nhttp://example.com/c.png\r\n";
    });
    auto const items = Ko::SnSelection::create();
    importLayers(editor, files, *items);
    ASSERT_EQ(3u, items->getCount());
    window.session().gestures().add(Ko::DrCarrier::create(items), "Drop");
    std::vector<std::string> names;
    for (Layer const& layer : editor.document().layers())
        names.push_back(layer.name);
    EXPECT_EQ((std::vector<std::string>{"back", "front", "a b", "back copy", "front copy"}), names);
}

} // namespace
