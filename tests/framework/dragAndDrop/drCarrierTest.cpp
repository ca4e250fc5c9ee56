#include "framework/dragAndDrop/drCarrier.h"
#include "tests/support/items.h"
#include "tests/support/thrown.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using Point = GePoint2<float>;

TEST(DrCarrier, BeginsAtItsLocationUnlessLaunchedElsewhere) {
    auto const carrier = DrCarrier::create(nullptr);
    EXPECT_TRUE(carrier->getSelection().isNull());
    carrier->setLocation(Point(1.0f, 2.0f));
    EXPECT_EQ(Point(1.0f, 2.0f), carrier->getLaunchLocation());
    carrier->setLaunchLocation(Point(5.0f, 6.0f));
    EXPECT_EQ(Point(1.0f, 2.0f), carrier->getLocation());
    EXPECT_EQ(Point(5.0f, 6.0f), carrier->getLaunchLocation());
}

TEST(DrCarrier, IsAnItemToo) {
    using Convert = SnItemConvert<RCShdPtr<DrCarrier>>;
    auto const carrier = DrCarrier::create(selectionOf({"a"}));
    RCShdPtr<SnItem const> const item = DrCarrierItem::create(carrier);
    EXPECT_FALSE(Convert::test(text("a")));
    EXPECT_EQ(carrier, Convert::get(item));
    EXPECT_TRUE(item->isEqual(*DrCarrierItem::create(carrier)));
    EXPECT_FALSE(item->isEqual(*DrCarrierItem::create(DrCarrier::create(carrier->getSelection()))));
    std::ostringstream stream;
    item.dump(stream);
    EXPECT_NE(std::string::npos, stream.str().find("launched at (0, 0)")) << stream.str();
    EXPECT_NE(std::string::npos, stream.str().find("Data:      a\n")) << stream.str();
}

TEST(DrCarrier, AssertsTheApplicationThread) {
    auto const carrier = DrCarrier::create(SnSelection::create());
    std::function<void()> const operations[] = {[] { return DrCarrier::create(nullptr); },
        [&] { return carrier->getSelection(); }, [&] { return carrier->getLocation(); },
        [&] { return carrier->getLaunchLocation(); }, [&] { carrier->setLocation({}); },
        [&] { carrier->setLaunchLocation({}); }, [&] { return carrier->getOffered(); },
        [&] { carrier->setOffered({}); }, [&] { return carrier->getEffect(); }, [&] { carrier->setEffect({}); },
        [&] { return carrier->getPlace(); }, [&] { carrier->setPlace({}); }, [&] { return carrier->getFormats(); },
        [&] { carrier->setFormats({}); }};
    std::jthread([&] {
        for (auto const& operation : operations)
            EXPECT_EQ("PiAppThread::isCurrent() [framework\\dragAndDrop\\src\\drCarrier]", thrownBy(operation));
        RCShdPtr<DrCarrier> const shared = carrier; // may be counted anywhere
    }).join();
}

TEST(DrCarrier, EndsTheProcessWhenDestroyedOnAnotherThread) {
    EXPECT_DEATH(
        {
            auto carrier = DrCarrier::create(SnSelection::create());
            std::jthread([&] { carrier.reset(); }).join();
        },
        "PiAppThread::isCurrent\\(\\)");
}

} // namespace
