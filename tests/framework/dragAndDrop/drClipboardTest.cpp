#include "framework/dragAndDrop/drClipboard.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "tests/support/childProcess.h"
#include "tests/support/items.h"

#include <gtest/gtest.h>
#include <iostream>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

void put(RCShdPtr<SnSelection> const& selection, DrClipboard::SrcAction action) {
    DrClipboard::getInstance().setContent(DrCarrier::create(selection), action);
}
std::string clipboard() {
    DrClipboard& clipboard = DrClipboard::getInstance();
    return content(*clipboard.getContent()->getSelection()) + "/" + std::to_string(clipboard.getSrcAction());
}

TEST(DrClipboard, KeepsWhatWasLastPutOnItUnlessThatIsNothing) {
    inChildProcess([] {
        EXPECT_FALSE(DrClipboard::isInitialized());
        EXPECT_EQ("/0", clipboard());
        EXPECT_TRUE(DrClipboard::isInitialized());
        auto const selection = selectionOf({"a", "b"});
        put(selection, DrClipboard::Cut);
        EXPECT_EQ("a b/2", clipboard());
        put(SnSelection::create(), DrClipboard::Copy);
        EXPECT_THROW(put(nullptr, DrClipboard::Copy), ExNullPtr);
        EXPECT_THROW(DrClipboard::getInstance().setContent(nullptr, DrClipboard::Copy), ExNullPtr);
        EXPECT_EQ("a b/2", clipboard());
        put(selectionOf({"c"}), DrClipboard::Copy);
        EXPECT_EQ("c/1", clipboard());
        DrClipboard::getInstance().clear();
        EXPECT_EQ("/0", clipboard());
        EXPECT_EQ("a b", content(*selection));
    });
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
            put(std::exchange(selection, nullptr), DrClipboard::Copy);
            InInitMgr::finalize();
            EXPECT_EQ("/0", clipboard());
            std::cerr << "finalised";
        },
        "destroyed in time, finalised");
}

TEST(DrClipboard, LetsTheProcessEndOnAnyThread) {
    inChildProcess([] {
        put(selectionOf({"a"}), DrClipboard::Copy);
        std::thread([] { std::exit(testing::Test::HasFailure() ? 1 : 0); }).join();
    });
}

} // namespace
