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
    EXPECT_EQ(3u, events.processEvents()) << "events posted meanwhile wait for the next call";
    EXPECT_EQ(3, wakeUps) << "for a nested loop in one of the three, and for the event that they post";
    EXPECT_EQ(1u, events.processEvents());
    EXPECT_EQ("abc", processed);
    events.setWakeUpHandler({});
    post('d');
    EXPECT_EQ(3, wakeUps);
    events.setWakeUpHandler([this] { ++wakeUps; });
    EXPECT_EQ(4, wakeUps) << "an event waits when the handler is set";
}

// The nested loops sleep until they are woken, as that of a modal dialog.
TEST_F(EvEventManagerTest, WakesANestedLoopForTheRemainingEvents) {
    bool isAwake = false;
    events.setWakeUpHandler([&] { isAwake = true; });
    for (int dialog = 0; dialog < 3; ++dialog)
        events.postRequest([&] {
            processed += '(';
            while (std::exchange(isAwake, false))
                events.processEvents();
            processed += ')';
        });
    isAwake = false;
    events.processEvents();
    EXPECT_EQ("((()))", processed);
    // The same for a handler that is set inside the event.
    events.setWakeUpHandler({});
    events.postRequest([&] {
        events.setWakeUpHandler([&] { isAwake = true; });
        EXPECT_TRUE(isAwake);
    });
    post('a');
    isAwake = false;
    events.processEvents();
    events.setWakeUpHandler({});
}

TEST_F(EvEventManagerTest, ProcessesTheRemainingEventsInANestedCall) {
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

// A budget that is used up before the first event, whatever the clock does.
TEST_F(EvEventManagerTest, LeavesTheRestOfABudgetInOrderAndWakesTheHost) {
    std::string expected;
    for (char name = 'a'; name <= 'z'; ++name)
        post(name);
    for (char name = 'a'; name <= 'z'; ++name) {
        wakeUps = 0;
        post('+'); // waits for its turn
        expected += name;
        EXPECT_EQ(1u, events.processEvents(std::chrono::nanoseconds(0)));
        EXPECT_EQ(expected, processed);
        EXPECT_LT(0, wakeUps);
    }
    events.postRequest([this] { EXPECT_EQ(1u, events.processEvents(std::chrono::nanoseconds(0))); });
    post('b');
    post('c');
    EXPECT_EQ(28u, events.processEvents(std::chrono::hours(1)));
    EXPECT_EQ(expected + std::string(26, '+') + "bc", processed);
    EXPECT_EQ(0u, events.processEvents(std::chrono::nanoseconds(0)));
}

TEST_F(EvEventManagerTest, KeepsTheEventsAfterOneThatThrows) {
    events.postRequest([] { throw std::runtime_error("bad event"); });
    post('a');
    EXPECT_THROW(events.processEvents(), std::runtime_error);
    EXPECT_EQ(3, wakeUps) << "one event is left";
    post('b');
    EXPECT_EQ(2u, events.processEvents());
    EXPECT_EQ("ab", processed);
}

TEST_F(EvEventManagerTest, ProcessesOnlyOnTheApplicationThread) {
    std::thread([this] { EXPECT_THROW(events.processEvents(), ExAssertionFailed); }).join();
}

TEST_F(EvEventManagerTest, KeepsTheOrderOfEachPostingThread) {
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

TEST(EvRequestEvent, HoldsMoveOnlyFunctionsOfAnySize) {
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

TEST(EvEventManagerLifetime, DestroysWaitingEventsAtTheEnd) {
    inChildProcess([] {
        auto const token = std::make_shared<int>(5);
        EvEventManager::getInstance().postRequest([token] { ADD_FAILURE(); });
        // Its destructor posts another event while the queue is destroyed.
        std::shared_ptr<void> poster(
            nullptr, [token](void*) { EvEventManager::getInstance().postRequest([token] { ADD_FAILURE(); }); });
        EvEventManager::getInstance().postRequest([poster = std::move(poster)] { ADD_FAILURE(); });
        InInitMgr::finalize();
        EXPECT_EQ(1, token.use_count());
        EXPECT_THROW(EvEventManager::getInstance(), InSingletonEx::ExNotInitialized);
    });
}

} // namespace
