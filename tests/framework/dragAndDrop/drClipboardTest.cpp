#include "framework/dragAndDrop/drClipboard.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "tests/support/childProcess.h"
#include "tests/support/items.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

std::string clipboard() {
    DrClipboard& clipboard = DrClipboard::getInstance();
    return content(*clipboard.getContent()->getSelection()) + "/" + std::to_string(clipboard.getSrcAction());
}

TEST(DrClipboard, KeepsWhatWasLastPutOnIt) {
    EXPECT_FALSE(DrClipboard::isInitialized());
    EXPECT_EQ("/0", clipboard());
    EXPECT_TRUE(DrClipboard::isInitialized());

    auto const carrier = DrCarrier::create(selectionOf({"a", "b"}));
    DrClipboard::getInstance().setContent(carrier, DrClipboard::Cut);
    EXPECT_EQ(carrier, DrClipboard::getInstance().getContent());
    EXPECT_EQ("a b/2", clipboard());
    DrClipboard::getInstance().setContent(DrCarrier::create(selectionOf({"c"})), DrClipboard::Copy);
    EXPECT_EQ("c/1", clipboard());
    DrClipboard::getInstance().clear();
    EXPECT_EQ("/0", clipboard());
    EXPECT_EQ("a b", content(*carrier->getSelection()));
}

TEST(DrClipboard, IsNotWipedByNothing) {
    DrClipboard& clipboardObject = DrClipboard::getInstance();
    clipboardObject.setContent(DrCarrier::create(selectionOf({"a"})), DrClipboard::Cut);
    clipboardObject.setContent(DrCarrier::create(SnSelection::create()), DrClipboard::Copy);
    EXPECT_EQ("a/2", clipboard());
    EXPECT_THROW(clipboardObject.setContent(nullptr, DrClipboard::Copy), ExNullPtr);
    EXPECT_THROW(clipboardObject.setContent(DrCarrier::create(nullptr), DrClipboard::Copy), ExNullPtr);
    EXPECT_EQ("a/2", clipboard());
}

/// Is destroyed with what its package has brought, or ends the process.
class Item : public SnItemBasic<LiString> {
public:
    Item() : SnItemBasic<LiString>("", nullptr) {}
    ~Item() override {
        SnItemConvert<RCShdPtr<DrCarrier>>::getPredicate();
        std::cerr << "destroyed in time, ";
    }
};

TEST(DrClipboard, IsEmptiedBeforeThePackagesEnd) {
    inChildProcess(
        [] {
            auto selection = SnSelection::create();
            selection->add(RCShdPtr<Item>::create());
            DrClipboard::getInstance().setContent(DrCarrier::create(selection), DrClipboard::Copy);
            selection.reset();
            InInitMgr::finalize();
            EXPECT_EQ("/0", clipboard());
            std::cerr << "finalised";
        },
        "destroyed in time, finalised");
}

TEST(DrClipboard, LetsTheProcessEndOnAnyThread) {
    inChildProcess([] {
        DrClipboard::getInstance().setContent(DrCarrier::create(selectionOf({"a"})), DrClipboard::Copy);
        std::thread([] { std::exit(testing::Test::HasFailure() ? 1 : 0); }).join();
    });
}

TEST(DrClipboard, IsNotCreatedByTheEndOfTheFramework) {
    inChildProcess([] {
        InInitMgr::finalize();
        EXPECT_FALSE(DrClipboard::isInitialized());
    });
}

} // namespace
