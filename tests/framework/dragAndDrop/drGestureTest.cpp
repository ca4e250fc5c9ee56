#include "framework/dragAndDrop/drGesture.h"
#include "base/exBase.h"
#include "tests/support/items.h"
#include "tests/support/thrown.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

std::string const effectNames[] = {"None", "Copy", "Move", "", "Link"};
std::string nameOf(DrEffect effect) {
    return effectNames[static_cast<std::size_t>(effect)];
}

/// Records its calls with the effect of the carrier. As a sink, it copies into groups, refuses locked items, and lets the rest be.
class View : public DrSrcSink {
public:
    View(std::string name, std::string& journal) : _name(std::move(name)), _journal(journal) {}

    bool willPopulateSelection() override { return canPopulate; }
    void populateSelection(RCShdPtr<DrCarrier> const& carrier) override { carrier->getSelection()->add(text("a")); }
    DrEffect accept(RCShdPtr<DrCarrier> const&, DrEffect effect, DrPlace const& place) override {
        std::string const target = place.target.isNull() ? "" : valueOf(place.target);
        return target == "locked" ? DrEffect::None : target == "group" ? DrEffect::Copy : effect;
    }
    void consumeSelection(RCShdPtr<DrCarrier> const& carrier) override {
        record("consumes", carrier);
        _journal += carrier->getPlace().side == DrPlace::Side::Before ? "before " : "";
        if (onConsume) onConsume();
    }
    void dropCompleted(RCShdPtr<DrCarrier> const& carrier) override { record("completed", carrier); }
    void operationCancelled(RCShdPtr<DrCarrier> const& carrier) override { record("cancelled", carrier); }

    bool canPopulate = true;
    std::function<void()> onConsume;

private:
    void record(char const* call, RCShdPtr<DrCarrier> const& carrier) {
        _journal += _name + " " + call + ":" + nameOf(carrier->getEffect()) + " ";
    }

    std::string const _name;
    std::string& _journal;
};

class DrGestureTest : public testing::Test {
protected:
    std::string drop(DrEffect wanted, DrPlace const& place) {
        journal.clear();
        auto const carrier = DrGesture::begin(source);
        carrier->setOffered(offered);
        DrEffect const shown = DrGesture::hover(sink, carrier, wanted, place);
        EXPECT_EQ(shown, DrGesture::drop(source, sink, carrier, wanted, place));
        EXPECT_EQ(shown, carrier->getEffect());
        return journal + "= " + nameOf(shown);
    }

    std::string journal;
    DrEffects offered = DrEffects::all();
    RCShdPtr<View> source = RCShdPtr<View>::create("source", journal);
    RCShdPtr<View> sink = RCShdPtr<View>::create("sink", journal);
};

TEST_F(DrGestureTest, TheSinkAcceptsChangesOrRefusesTheEffectByPlace) {
    std::string const cancelled = "source cancelled:None sink cancelled:None = None";
    EXPECT_EQ("sink consumes:Move source completed:Move = Move", drop(DrEffect::Move, {}));
    EXPECT_EQ("sink consumes:Link before source completed:Link = Link",
        drop(DrEffect::Link, {text("layer"), DrPlace::Side::Before}));
    EXPECT_EQ("sink consumes:Copy source completed:Copy = Copy", drop(DrEffect::Move, {text("group")}));
    EXPECT_EQ(cancelled, drop(DrEffect::Move, {text("locked")}));
    EXPECT_EQ(cancelled, drop(DrEffect::None, {}));
    offered = {DrEffect::Move, DrEffect::Link};
    EXPECT_EQ(cancelled, drop(DrEffect::Move, {text("group")})) << "the source offers no copies";
    EXPECT_EQ("sink consumes:Move source completed:Move = Move", drop(DrEffect::Move, {text("layer")}));
    source->canPopulate = false;
    EXPECT_TRUE(DrGesture::begin(source).isNull());
}

TEST_F(DrGestureTest, ADropThatFailsOrReleasesTheViewsEndsForBoth) {
    auto const carrier = DrGesture::begin(source);
    sink->onConsume = [] { throw std::runtime_error("full"); };
    EXPECT_EQ("full", messageOf([&] { return DrGesture::drop(source, sink, carrier, DrEffect::Copy, {}); }));
    EXPECT_EQ("sink consumes:Copy source cancelled:None sink cancelled:None ", std::exchange(journal, {}));
    sink->onConsume = [&] { source.reset(), sink.reset(); };
    EXPECT_EQ(DrEffect::Copy, DrGesture::drop(source, sink, carrier, DrEffect::Copy, {}));
    EXPECT_EQ("sink consumes:Copy source completed:Copy ", std::exchange(journal, {}));
    EXPECT_EQ(
        DrEffect::Move, DrGesture::drop(nullptr, RCShdPtr<View>::create("sink", journal), carrier, DrEffect::Move, {}));
}

TEST(DrSrcSink, AcceptsByDefaultWhatItConsumes) {
    class Consumer : public DrSrcSink {
        bool willConsumeSelection(RCShdPtr<DrCarrier> const& carrier) override {
            return !carrier->getSelection()->isEmpty();
        }
    };
    auto const sink = RCShdPtr<Consumer>::create();
    EXPECT_EQ(DrEffect::Link, sink->accept(DrCarrier::create(selectionOf({"a"})), DrEffect::Link, {}));
    EXPECT_EQ(DrEffect::None, sink->accept(DrCarrier::create(selectionOf({})), DrEffect::Link, {}));
}

TEST(DrFormats, MakeBytesWhenTheyAreAskedFor) {
    DrFormats formats;
    int made = 0;
    formats.add("image/png", [&] { return "png " + std::to_string(++made); });
    formats.add("text/plain", [] { return std::string("a\0b", 3); });
    formats.add("IMAGE/PNG", [&] {
        formats = DrFormats();
        return std::to_string(++made);
    });
    EXPECT_EQ((Vector<LiString>{"IMAGE/PNG", "text/plain"}), formats.getTypes());
    EXPECT_EQ(0, made);
    auto const carrier = DrCarrier::create(SnSelection::create());
    carrier->setFormats(formats);
    EXPECT_EQ(std::string("a\0b", 3), carrier->getFormats().make("Text/Plain"));
    EXPECT_EQ("1", formats.make("image/png"));
    EXPECT_FALSE(formats.contains("image/png")) << "replaced while it was made";
    EXPECT_EQ("2", carrier->getFormats().make("image/png"));
    EXPECT_FALSE(carrier->getFormats().make("image/pn"));
    EXPECT_THROW(formats.add("text/plain", {}), ExNullPtr);
}

} // namespace
