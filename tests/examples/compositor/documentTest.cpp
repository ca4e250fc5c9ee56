#include "document/documentFile.h"
#include "tests/examples/compositor/pictures.h"
#include "tests/support/childProcess.h"
#include "tests/support/temporaryFolder.h"
#include "tests/support/thrown.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>

namespace {

using namespace compositor;
using namespace KoTest;

SharedPicture smallPicture() {
    return std::make_shared<Picture const>(paint({4, 3}, [](int x, int y) {
        return (x + y) % 2 == 0 ? Colour{10, 20, 30, 40} : Colour{200, 100, 50, 255};
    }));
}

Layer makeLayer(std::uint64_t id, std::string name, SharedPicture picture = smallPicture()) {
    return {id, std::move(name), {std::move(picture), 0, 0, 1.0f, BlendMode::Over}};
}

std::string names(Document const& document) {
    std::string result;
    for (Layer const& layer : document.layers())
        result += layer.name;
    return result;
}

Document makeDocument() {
    Document document({10, 8});
    for (char const* const name : {"a", "b", "c"})
        document.insert(document.layers().size(), makeLayer(document.newId(), name));
    return document;
}

TEST(Document, IsUnchangedByARefusedOperation) {
    Document document = makeDocument();
    EXPECT_THROW(document.remove(9), DocumentError);
    EXPECT_THROW(document.insert(4, makeLayer(9, "d")), DocumentError);
    EXPECT_THROW(document.insert(0, makeLayer(9, "a")), DocumentError);
    EXPECT_THROW(document.reorder(1, 3), DocumentError);
    EXPECT_THROW(document.replace(makeLayer(1, "b")), DocumentError);
    EXPECT_THROW(document.replace(makeLayer(1, "a\nb")), DocumentError);
    Layer layer = makeLayer(1, "a");
    EXPECT_NO_THROW(document.replace(layer));
    layer.placed.opacity = std::nanf("");
    EXPECT_THROW(document.replace(layer), DocumentError);
    EXPECT_THROW(document.setCanvas({0, 1}), ImageError);
    EXPECT_EQ("abc", names(document));
    document.insert(0, makeLayer(9, "d"));
    EXPECT_EQ(10u, document.newId()) << "no id is used twice";
}

class DocumentFile : public testing::Test {
protected:
    DocumentFile() {
        SharedPicture const shared = smallPicture();
        document.insert(0, makeLayer(document.newId(), "layer with a name", shared));
        document.insert(1, makeLayer(document.newId(), "\xC3\xBC \"quoted\" #", shared));
        PlacedPicture const placed{smallPicture(), -2147483647, 42, 0.1f, BlendMode::Screen};
        document.insert(0, {document.newId(), "third", placed});
        document.insert(1, {document.newId(), "fourth", {smallPicture(), 1, 2, 1.0f, BlendMode::Over, false}});
    }

    std::string save() {
        saveDocument(document, folder / "saved.koc");
        return folder.read("saved.koc");
    }
    static Document decode(std::string const& text) {
        std::istringstream stream(text);
        return readDocument(stream, text.size());
    }

    TemporaryFolder folder;
    Document document{Size{7, 5}};
};

TEST_F(DocumentFile, KeepsEverythingAndEachPictureOnce) {
    std::string const text = save();
    Document const opened = decode(text);
    EXPECT_EQ(document.canvas(), opened.canvas());
    ASSERT_EQ(4u, opened.layers().size());
    for (std::size_t index = 0; index < 4; ++index) {
        Layer const& saved = document.layers()[index];
        Layer const& layer = opened.layers()[index];
        EXPECT_EQ(saved.name, layer.name);
        EXPECT_EQ(*saved.placed.picture, *layer.placed.picture);
        EXPECT_EQ(saved.placed.isVisible, layer.placed.isVisible);
    }
    EXPECT_EQ(opened.layers()[2].placed.picture, opened.layers()[3].placed.picture);
    saveDocument(opened, folder / "again.koc");
    EXPECT_EQ(text, folder.read("again.koc"));
}

TEST_F(DocumentFile, ReportsATruncationAtAnyByte) {
    std::string const text = save();
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_THROW(decode(text.substr(0, length)), DocumentError) << length;
    EXPECT_EQ("there are 1 bytes after the last picture", messageOf([&] { decode(text + "x"); }));
}

TEST_F(DocumentFile, ReportsTheLineOrThePictureThatIsWrong) {
    std::string const start = "compositor document 1\n", layers = start + "canvas 1 1\npicture 9\nlayer 0 0 0 ";
    for (auto const& [text, expected] :
        std::vector<std::pair<std::string, char const*>>{{"", "it is neither a document nor a PNG picture"},
            {"compositor document 2\nsomething new",
                "a newer compositor has written it: it is a document of version 2,"},
            {"compositor document x\n", "line 1: \"x\" is not a number"},
            {start + std::string(2000000, ' '), "line 2: it is too long"},
            {start + "size 1 1\n", "line 2: expected the canvas"},
            {start + "canvas 1 x\n", "line 2: \"x\" is not a number that can stand here"},
            {start + "canvas 1 0\n", "line 2: a picture of 1 x 0 pixels is not possible"},
            {start + "canvas -1 1\n", "line 2: a picture of -1 x 1 pixels is not possible"},
            {start + "canvas 65536 1\n", "line 2: a picture of 65536 x 1 pixels is not possible"},
            {start + "canvas 65535 65535\n", "line 2: a picture of 65535 x 65535 pixels is not possible"},
            {start + "canvas 1 1\nlayer 0 0 0 1 over a\n", "line 3: there is no picture 0"},
            {layers + "2 over a\n", "line 4: an opacity lies between 0 and 1"},
            {layers + "1 under a\n", "line 4: there is no blend mode \"under\""},
            {layers + "1 over a\nlayer 0 0 0 1 over a\n", "line 5: there is a layer"},
            {start + "canvas 1 1\npicture -1\n", "line 3: \"-1\" is not a number"},
            {start + "canvas 1 1\nnonsense\n", "line 3: unknown word \"nonsense\""},
            {start + "canvas 1 1\npicture 99999999999999\ndata\n", "picture 0: the file ends before it does"},
            {start + "canvas 1 1\npicture 4\ndata\nabcd", "picture 0: it is not a PNG picture"},
            {start + "canvas 1 1\npicture " + std::to_string(hugePicture().size()) + "\ndata\n" + hugePicture(),
                "picture 0: the PNG picture is cut off: "}}) {
        std::string const error = messageOf([&input = text] { decode(input); });
        EXPECT_EQ(0u, error.find(expected)) << error;
    }
}

long peakMemory() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// Sizes in megabytes. The pictures take 8 and cannot be compressed.
TEST_F(DocumentFile, IsSavedWithLittleMemoryBesidesThePictures) {
    inChildProcess([this] {
        std::mt19937 random(1);
        for (int number = 0; number < 8; ++number) {
            auto const byte = [&random] { return static_cast<std::uint8_t>(random() >> 24); };
            auto const noise = [&](int, int) { return Colour{byte(), byte(), byte(), byte()}; };
            document.insert(0, makeLayer(document.newId(), "noise " + std::to_string(number),
                                   std::make_shared<Picture const>(paint({512, 512}, noise))));
        }
        long const before = peakMemory();
        saveDocument(document, folder / "large.koc");
        EXPECT_LT(peakMemory(), before + 6);
    });
}

} // namespace
