#include "resmgt/mtGroup.h"
#include "base/exBase.h"
#include "resmgt/lkEvent.h"
#include "resmgt/sleeper.h"
#include "tests/support/logRecorder.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <limits>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::LogRecorder;
using Group = MtGroup<std::queue<MtTask>>;

struct Task : MtTaskImp {
    explicit Task(std::function<void()> itsWork) : work(std::move(itsWork)) {}
    void execute() override { work(); }
    std::function<void()> const work;
};

void add(Group& group, std::function<void()> work) {
    group.add(RCShdPtr<Task>::create(std::move(work)));
}

/// Keeps a worker of the group busy until the event `opened` is set.
struct Gate {
    explicit Gate(Group& group) {
        add(group, [this] {
            reached.set();
            opened.wait();
        });
        reached.wait();
    }
    LkEvent reached{"reached", false}, opened{"opened", false};
};

TEST(MtGroup, ExecutesTasksOfAllProducersOnceAndThoseOfEachInOrder) {
    constexpr int producers = 4, tasks = 5000;
    std::vector<std::atomic<int>> executed(producers);
    {
        Group group("Order", 1);
        std::vector<std::jthread> threads;
        for (std::size_t producer = 0; producer < producers; ++producer)
            threads.emplace_back([&, producer] {
                for (int task = 0; task < tasks; ++task)
                    add(group, [&, producer, task] { EXPECT_EQ(task, executed[producer]++); });
            });
        threads.clear();
        group.waitForRequests();
        EXPECT_EQ(0u, group.getNumRequests());
    }
    for (auto const& count : executed)
        EXPECT_EQ(tasks, count);
}

// Some of the tasks are added when the worker has already looked at those before them: it keeps these elsewhere.
TEST(MtGroup, ChangesTheOrderOfWaitingTasks) {
    for (std::size_t numReady = 0; numReady <= 3; ++numReady) {
        SCOPED_TRACE(numReady);
        std::string executed;
        std::vector<RCShdPtr<Task>> tasks;
        for (char const name : {'a', 'b', 'c', 'd', 'e', 'f'})
            tasks.push_back(RCShdPtr<Task>::create([&executed, name] { executed += name; }));
        Group group("Reordered", 1);
        Gate gate(group);
        LkEvent reached("reached", false), opened("opened", false);
        add(group, [&] {
            reached.set();
            opened.wait();
        });
        for (std::size_t task = 0; task < 3; ++task) {
            if (task == numReady) gate.opened.set(), reached.wait();
            group.add(tasks[task]);
        }
        if (numReady == 3) gate.opened.set(), reached.wait();
        EXPECT_TRUE(group.moveToFront(*tasks[2]));
        EXPECT_TRUE(group.moveToFront(*tasks[2]));
        EXPECT_FALSE(group.moveToFront(*tasks[3]));
        for (std::size_t before : {1u, 0u}) // in the middle, and at the first one left of the original order
            group.addAhead(
                tasks[3 + before], [&](MtTaskImp const& waiting) { return &waiting == tasks[before].get(); });
        group.addAhead(tasks[5], [](MtTaskImp const&) { return false; });
        opened.set();
        group.waitForRequests();
        EXPECT_EQ("cdaebf", executed);
        EXPECT_THROW(group.addAhead(nullptr, [](MtTaskImp const&) { return true; }), ExNullPtr);
    }
}

TEST(MtGroup, PutsAllWorkersToWork) {
    Group group("Six", 6);
    for (int round = 0; round < 200; ++round) {
        // Each task waits for the others, so all six workers have to run at once.
        std::latch together(6);
        for (int task = 0; task < 6; ++task)
            add(group, [&] { together.arrive_and_wait(); });
        group.waitForRequests();
    }
}

TEST(MtGroup, MakesProducersWaitForRoom) {
    std::atomic<int> added{0};
    Group group("Bounded", 1, 2);
    Gate gate(group);
    std::jthread const producer([&] {
        for (int task = 0; task < 50; ++task) {
            add(group, [] {});
            ++added;
        }
    });
    while (added < 2)
        std::this_thread::yield();
    EXPECT_EQ(3u, group.getNumRequests()) << "one is executed, two wait, and the queue is full";
    EXPECT_EQ(2, added);
    gate.opened.set();
    while (added < 50)
        std::this_thread::yield();
    group.waitForRequests();
}

TEST(MtGroup, DiscardsWaitingTasksAtItsEnd) {
    auto const token = std::make_shared<int>(1);
    std::optional<Group> group(std::in_place, "Ending", 1);
    Gate gate(*group);
    for (int task = 0; task < 100; ++task)
        add(*group, [token] {});
    gate.opened.set();
    group.reset();
    EXPECT_EQ(1, token.use_count()) << "all tasks are destroyed";
}

TEST(MtThreadPool, ThrowsIfAThreadCannotBeStarted) {
    struct Huge : MtThreadPool {
        Huge() : MtThreadPool("Huge", 1, false, std::size_t{1} << 60) {}
        ~Huge() override { stop(); }
        using MtThreadPool::start;
        bool obtainTask(MtTask&) override { return false; }
    } pool;
    EXPECT_THROW(pool.start(), ExInternalError);
}

TEST(MtGroup, SurvivesTasksThatThrow) {
    LogRecorder const log;
    auto const token = std::make_shared<int>(1);
    Group group("Throwing", 1);
    add(group, [token] { throw std::runtime_error("task failed"); });
    group.waitForRequests();
    EXPECT_EQ(1, token.use_count()) << "the task is destroyed";
    bool executed = false;
    add(group, [&] { executed = true; });
    group.waitForRequests();
    EXPECT_TRUE(executed);
    EXPECT_EQ((std::vector<std::string>{"Errors:0 A task failed: task failed"}), log.lines());
}

TEST(MtGroup, CallsItsObserverForEveryTask) {
    struct Counter : MtContainerObserver<std::queue<MtTask>> {
        void taken(std::queue<MtTask> const&, MtTask const&) override { ++count; }
        std::atomic<int> count{0};
    };
    auto const counter = RCShdPtr<Counter>::create();
    Group group("Observed", 3);
    group.setContainerObserver(counter);
    for (int task = 0; task < 100; ++task)
        add(group, [] {});
    group.waitForRequests();
    group.setContainerObserver(nullptr);
    add(group, [] {});
    group.waitForRequests();
    EXPECT_EQ(100, counter->count);
}

TEST(MtGroup, RejectsInvalidArguments) {
    EXPECT_THROW(Group("None", 0), ExAssertionFailed);
    EXPECT_THROW(Group("Negative", 1, -1), ExAssertionFailed);
    Group group("Null", 1);
    EXPECT_THROW(group.add(nullptr), ExNullPtr);
}

TEST(MtGroup, CanBeDestroyedAtAnyTime) {
    for (int round = 0; round < 300; ++round) {
        Group group("Short", 6);
        for (int task = 0; task < round % 10; ++task)
            add(group, [] {});
    }
}

TEST(Sleeper, WakesOnceForAllEarlierWakesOrAfterTheTime) {
    Sleeper sleeper("Test");
    EXPECT_FALSE(sleeper.sleep(0.001));
    EXPECT_FALSE(sleeper.sleep(-1));
    sleeper.wake();
    sleeper.wake();
    EXPECT_TRUE(sleeper.sleep(1e6));
    EXPECT_FALSE(sleeper.sleep(0));
    std::jthread const wakes([&] { sleeper.wake(); });
    EXPECT_TRUE(sleeper.sleep(1e6));
}

TEST(LkDeadline, SaturatesForLongWaits) {
    for (double const seconds : {1e9, 1e12, 1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_EQ(LkDeadline::never, LkDeadline::after(seconds)) << seconds;
        LkEvent event("event", false);
        Sleeper sleeper("sleeper");
        std::latch waiting(1);
        std::jthread const ends([&] {
            waiting.wait();
            event.set();
            sleeper.wake();
        });
        waiting.count_down();
        EXPECT_TRUE(event.wait(seconds)) << seconds;
        EXPECT_TRUE(sleeper.sleep(seconds)) << seconds;
    }
    for (double const seconds : {0.0, -1e12, -std::numeric_limits<double>::infinity()})
        EXPECT_FALSE(LkEvent("event", false).wait(seconds)) << seconds;
}

TEST(LkEvent, StaysSetUntilReset) {
    LkEvent event("event", true);
    event.wait();
    EXPECT_TRUE(event.wait(0.0));
    event.reset();
    event.reset();
    EXPECT_FALSE(event.wait(0.0));
    EXPECT_FALSE(event.wait(0.001));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0.0));
}

TEST(LkEvent, WakesAllThreadsAndCanBeDestroyedThen) {
    for (int round = 0; round < 1000; ++round) {
        auto event = std::make_unique<LkEvent>("event", false);
        int value = 0;
        std::latch awake(2);
        std::vector<std::jthread> waiting;
        for (int thread = 0; thread < 2; ++thread)
            waiting.emplace_back([&] {
                event->wait();
                EXPECT_EQ(round, value) << "earlier writes are visible";
                awake.count_down();
            });
        std::jthread const setter([&] {
            value = round;
            event->set();
        });
        awake.wait();
        event.reset();
    }
}

} // namespace
