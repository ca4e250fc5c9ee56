#include "framework/dragAndDrop/drClipboard.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "tests/support/childProcess.h"
#include "tests/support/items.h"

#include <functional>
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

TEST(DrClipboard, KeepsTheLastContentThatIsNotEmpty) {
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

TEST(DrClipboard, TellsWhatWasReplacedInOrder) {
    inChildProcess([] {
        DrClipboard& board = DrClipboard::getInstance();
        std::string heard;
        auto const of = [](RCShdPtr<DrCarrier> const& carrier, DrClipboard::SrcAction action) {
            return content(*carrier->getSelection()) + "/" + std::to_string(action);
        };
        CbSubscription const emptying = board.onChange([&](DrClipboardChange const& change) {
            if (change.srcAction == DrClipboard::Cut) board.clear();
        });
        CbSubscription hearing = board.onChange([&](DrClipboardChange const& change) {
            heard +=
                of(change.contentBefore, change.srcActionBefore) + ">" + of(change.content, change.srcAction) + " ";
        });
        put(selectionOf({"a"}), DrClipboard::Copy);
        put(SnSelection::create(), DrClipboard::Copy);
        put(selectionOf({"b"}), DrClipboard::Cut);
        EXPECT_EQ("/0>a/1 a/1>b/2 b/2>/0 ", heard);
        hearing.end();
        put(selectionOf({"a"}), DrClipboard::Copy);
        EXPECT_EQ("/0>a/1 a/1>b/2 b/2>/0 ", heard);
    });
}

// The selection belongs to the clipboard alone then.
void putFuse(std::function<void()> onDestroy) {
    auto const selection = SnSelection::create();
    selection->add(RCShdPtr<Fuse>::create(onDestroy));
    put(selection, DrClipboard::Copy);
}

TEST(DrClipboard, ChangesContentAndActionBeforeItReleasesTheOldContent) {
    inChildProcess([] {
        DrClipboard& board = DrClipboard::getInstance();
        for (auto const& [change, expected] : std::vector<std::pair<std::function<void()>, char const*>>{
                 {[] { put(selectionOf({"a"}), DrClipboard::Cut); }, "a/2"}, {[&] { board.clear(); }, "/0"}}) {
            std::string seen;
            putFuse([&] {
                seen = clipboard();
                put(selectionOf({"b"}), DrClipboard::Copy);
            });
            change();
            EXPECT_EQ(expected, seen);
            EXPECT_EQ("b/1", clipboard()) << "what a destructor puts stays";
        }
        std::jthread([&] {
            std::function<void()> const operations[] = {[&] { return board.getContent(); },
                [&] { return board.getSrcAction(); }, [&] { board.setContent(nullptr, DrClipboard::Copy); },
                [&] { board.clear(); }};
            for (auto const& operation : operations)
                EXPECT_THROW(operation(), ExAssertionFailed);
        }).join();
    });
}

TEST(DrClipboard, IsEmptiedBeforeThePackagesAreFinalised) {
    inChildProcess(
        [] {
            putFuse([] {
                static_cast<void>(
                    SnItemConvert<RCShdPtr<DrCarrier>>::getPredicate()); // ends the process if it is too late
                std::cerr << "destroyed in time, ";
            });
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
