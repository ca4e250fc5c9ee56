#include "adapters/qt/qtDragAndDrop.h"

#include "adapters/qt/qtClipboardBridge.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "tests/support/items.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QUrl>
#include <QWidget>
#include <gtest/gtest.h>

using namespace Ko;
using namespace KoTest;

namespace {

/// Records what happens to it; accepts copies only on the item "group".
class RecordingPart : public DrSrcSink {
public:
    bool willPopulateSelection() override { return true; }
    void populateSelection(RCShdPtr<DrCarrier> const& carrier) override { carrier->getSelection()->add(text("sky")); }
    DrEffect accept(RCShdPtr<DrCarrier> const&, DrEffect wanted, DrPlace const& place) override {
        if (!place.target) return DrEffect::None;
        return valueOf(place.target) == "group" ? DrEffect::Copy : wanted;
    }
    void consumeSelection(RCShdPtr<DrCarrier> const& carrier) override {
        dropped = content(*carrier->getSelection()) + " on " + valueOf(carrier->getPlace().target);
        effect = carrier->getEffect();
    }

    std::string dropped;
    DrEffect effect = DrEffect::None;
};

class QtDragAndDropTest : public testing::Test {
protected:
    QtDragAndDropTest() {
        drags->setPlaces([this](QPoint const& point) {
            return DrPlace{point.x() < 50 ? text("group") : point.x() < 80 ? text("layer") : nullptr};
        });
    }
    /// Moves the data to a point and drops them. @returns the action that the widget accepts.
    Qt::DropAction drop(QMimeData const& data, int x, Qt::KeyboardModifiers held = {}) {
        Qt::DropActions const all = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
        QDragEnterEvent enter({x, 5}, all, &data, Qt::LeftButton, held);
        QCoreApplication::sendEvent(&widget, &enter);
        Qt::DropAction const hovered = enter.isAccepted() ? enter.dropAction() : Qt::IgnoreAction;
        QDropEvent event(QPointF(x, 5), all, &data, Qt::LeftButton, held);
        QCoreApplication::sendEvent(&widget, &event);
        EXPECT_EQ(hovered, event.isAccepted() ? event.dropAction() : Qt::IgnoreAction);
        return hovered;
    }

    QWidget widget;
    RCShdPtr<RecordingPart> part = RCShdPtr<RecordingPart>::create();
    QtDragAndDrop* drags = new QtDragAndDrop(widget, part);
};

RCShdPtr<DrCarrier> makeCarrier(int* numMade = nullptr) {
    auto const carrier = DrCarrier::create(selectionOf({"sky"}));
    DrFormats formats;
    formats.add("image/png", [] { return std::string("no picture"); });
    formats.add("text/plain", [numMade] {
        if (numMade) ++*numMade;
        return std::string("sky \xC3\xA4");
    });
    carrier->setFormats(formats);
    return carrier;
}

} // namespace

TEST_F(QtDragAndDropTest, ChoosesTheEffectByKeysAndPlace) {
    struct Row {
        int x;
        Qt::KeyboardModifiers held;
        Qt::DropAction action;
        DrEffect effect;
    };
    for (Row const& row :
        {Row{60, {}, Qt::MoveAction, DrEffect::Move}, Row{60, Qt::ControlModifier, Qt::CopyAction, DrEffect::Copy},
            Row{60, Qt::ControlModifier | Qt::ShiftModifier, Qt::LinkAction, DrEffect::Link},
            Row{10, {}, Qt::CopyAction, DrEffect::Copy}, Row{90, {}, Qt::IgnoreAction, DrEffect::None}}) {
        SCOPED_TRACE(row.x);
        part->dropped.clear();
        part->effect = DrEffect::None;
        auto const data = QtDragAndDrop::toMimeData(makeCarrier());
        EXPECT_EQ(drop(*data, row.x, row.held), row.action);
        EXPECT_EQ(part->effect, row.effect);
        EXPECT_EQ(part->dropped, row.x == 60 ? "sky on layer" : row.x == 10 ? "sky on group" : "");
    }
}

TEST_F(QtDragAndDropTest, TakesFilesTextsAndPicturesOfOtherPrograms) {
    QMimeData files;
    files.setUrls(
        {QUrl::fromLocalFile("/tmp/a b.png"), QUrl::fromLocalFile("/tmp/ä.png"), QUrl("http://example.org/")});
    EXPECT_EQ(drop(files, 60), Qt::CopyAction);
    EXPECT_EQ(part->dropped, "/tmp/a b.png /tmp/ä.png on layer");
    QMimeData texts;
    texts.setText("a text");
    drop(texts, 60);
    EXPECT_EQ(part->dropped, "a text on layer");
    QMimeData pictures;
    QImage picture(2, 1, QImage::Format_RGB32);
    picture.fill(Qt::red);
    pictures.setImageData(picture);
    part->dropped.clear();
    EXPECT_EQ(drop(pictures, 60), Qt::IgnoreAction) << "no item";
    drags->setImport([](DrFormats const& formats, SnSelection& items) {
        auto const png = formats.make("image/png");
        auto const image = QImage::fromData(QByteArray::fromStdString(png.value_or("")));
        items.add(text(image.pixelColor(1, 0) == QColor(Qt::red) ? "red picture" : "?"));
    });
    drop(pictures, 60);
    EXPECT_EQ(part->dropped, "red picture on layer");
}

TEST_F(QtDragAndDropTest, OffersTheFormsOfACarrierWhenTheyAreAskedFor) {
    int numMade = 0;
    auto const data = QtDragAndDrop::toMimeData(makeCarrier(&numMade));
    EXPECT_TRUE(data->hasText());
    EXPECT_TRUE(data->hasImage());
    EXPECT_EQ(numMade, 0);
    EXPECT_EQ(data->text(), QString::fromUtf8("sky ä"));
    EXPECT_EQ(numMade, 1);
    EXPECT_EQ(data->data("image/png"), "no picture");
    EXPECT_TRUE(data->data("image/gif").isEmpty());
    EXPECT_EQ(QtDragAndDrop::toCarrier(*data, {})->getFormats().getTypes().size(), 2u) << "the same carrier";
}

namespace {

class QtClipboardBridgeTest : public testing::Test {
protected:
    QtClipboardBridgeTest() {
        DrClipboard::getInstance().clear();
        clipboard->clear();
    }
    ~QtClipboardBridgeTest() override { DrClipboard::getInstance().clear(); }
    static std::string copied() { return content(*DrClipboard::getInstance().getContent()->getSelection()); }

    QClipboard* clipboard = QGuiApplication::clipboard();
};

} // namespace

TEST_F(QtClipboardBridgeTest, OffersCopiesLateAndLeavesThemAtItsEnd) {
    int numMade = 0;
    {
        QtClipboardBridge const bridge;
        DrClipboard::getInstance().setContent(makeCarrier(&numMade), DrClipboard::Cut);
        EXPECT_EQ(numMade, 0);
        EXPECT_EQ(DrClipboard::getInstance().getSrcAction(), DrClipboard::Cut) << "not imported again";
        EXPECT_EQ(clipboard->text(), QString::fromUtf8("sky ä"));
    }
    EXPECT_EQ(clipboard->text(), QString::fromUtf8("sky ä"));
    EXPECT_EQ(numMade, 2);
}

TEST_F(QtClipboardBridgeTest, BringsWhatOtherProgramsCopyAlsoBeforeItExisted) {
    clipboard->setText("before");
    QtClipboardBridge const bridge;
    EXPECT_EQ(copied(), "before");
    DrClipboard::getInstance().setContent(makeCarrier(), DrClipboard::Copy);
    clipboard->setText("other");
    EXPECT_EQ(copied(), "other");
    auto const& formats = DrClipboard::getInstance().getContent()->getFormats();
    EXPECT_EQ(formats.make("text/plain"), "other");
    clipboard->setText("again");
    EXPECT_EQ(clipboard->text(), "again");
    clipboard->clear();
    EXPECT_EQ(copied(), "again");
    clipboard->setImage(QImage(1, 1, QImage::Format_RGB32));
    EXPECT_EQ(copied(), "") << "nothing of which items can be made";
    DrClipboard::getInstance().setContent(makeCarrier(), DrClipboard::Copy);
    DrClipboard::getInstance().clear();
    EXPECT_EQ(clipboard->text(), "");
}
