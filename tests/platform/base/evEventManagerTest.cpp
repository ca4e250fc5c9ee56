#include "base/evEventManager.h"
#include "base/evRequestEvent.h"
#include "base/exBase.h"
#include "base/inInitMgr.h"
#include "tests/support/childProcess.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::inChildProcess;

class EvEventManagerTest : public testing::Test {
protected:
    EvEventManagerTest() {
        events.setWakeUpHandler([this] { ++wakeUps; });
    }
    ~EvEventManagerTest() override {
        events.setWakeUpHandler({});
        events.processEvents();
    }

    void post(char name) {
        events.postRequest([this, name] { processed += name; });
    }

    EvEventManager& events = EvEventManager::getInstance();
    std::string processed;
    std::atomic<int> wakeUps{0};
};

TEST_F(EvEventManagerTest, ProcessesInTheOrderOfPostingAndWakesUpOncePerBatch) {
    EXPECT_EQ(0u, events.processEvents());
    post('a');
    events.postRequest([this] { post('c'); });
    post('b');
    EXPECT_EQ(1, wakeUps);
    EXPECT_EQ(3u, events.processEvents()) << "what is posted meanwhile is left for the next call";
    EXPECT_EQ(2, wakeUps);
    EXPECT_EQ(1u, events.processEvents());
    EXPECT_EQ("abc", processed);
    events.setWakeUpHandler({});
    post('d');
    EXPECT_EQ(2, wakeUps);
}

TEST_F(EvEventManagerTest, GoesOnInAnInnerLoopWhereTheOuterOneIs) {
    post('a');
    events.postRequest([this] {
        for (char const name : {'d', 'e', 'f', 'g'})
            post(name);
        processed += '(';
        EXPECT_EQ(6u, events.processEvents());
        processed += ')';
    });
    post('b');
    post('c');
    EXPECT_EQ(2u, events.processEvents());
    EXPECT_EQ("a(bcdefg)", processed);
    EXPECT_EQ(0u, events.processEvents());
}

TEST_F(EvEventManagerTest, KeepsWhatStandsBehindAnEventThatThrows) {
    events.postRequest([] { throw std::runtime_error("bad event"); });
    post('a');
    EXPECT_THROW(events.processEvents(), std::runtime_error);
    EXPECT_EQ(2, wakeUps) << "there is still something to process";
    post('b');
    EXPECT_EQ(2u, events.processEvents());
    EXPECT_EQ("ab", processed);
}

TEST_F(EvEventManagerTest, BelongsToTheApplicationThread) {
    std::thread([this] { EXPECT_THROW(events.processEvents(), ExAssertionFailed); }).join();
}

TEST_F(EvEventManagerTest, KeepsTheOrderOfEachOfManyPosters) {
    constexpr int posters = 4, posts = 5000;
    std::array<int, posters> next{};
    int processedEvents = 0;
    std::vector<std::jthread> threads;
    for (std::size_t poster = 0; poster < posters; ++poster)
        threads.emplace_back([&, poster] {
            for (int post = 0; post < posts; ++post)
                events.postRequest([&, poster, post] {
                    EXPECT_EQ(post, next[poster]++);
                    ++processedEvents;
                });
        });
    while (processedEvents < posters * posts)
        events.processEvents();
}

TEST(EvRequestEvent, HoldsFunctionsOfAnySizeThatCannotBeCopiedUntilAnotherIsMovedIntoIt) {
    auto const small = std::make_shared<int>(1);
    auto const large = std::make_shared<int>(2);
    int sum = 0;
    EvRequestEvent request([small] { ADD_FAILURE(); });
    request = EvRequestEvent([large, &sum, own = std::make_unique<int>(20), padding = std::array<int, 20>()] {
        sum += *large + *own + padding[0];
    });
    EXPECT_EQ(1, small.use_count());
    request();
    EXPECT_EQ(22, sum);
    request = EvRequestEvent([own = std::make_unique<int>(1), &sum] { sum += *own; });
    EXPECT_EQ(1, large.use_count());
    request();
    EXPECT_EQ(23, sum);
}

TEST(EvEventManagerLifetime, DestroysWhatWaitsAtTheEnd) {
    inChildProcess([] {
        auto const token = std::make_shared<int>(5);
        EvEventManager::getInstance().postRequest([token] { ADD_FAILURE(); });
        InInitMgr::finalize();
        EXPECT_EQ(1, token.use_count());
        EXPECT_THROW(EvEventManager::getInstance(), InSingletonEx::ExNotInitialized);
    });
}

} // namespace
