#include "base/exBase.h"
#include "resmgt/lkSingleton.imp.h"
#include "tests/fixtures/sharedSingleton/sharedSingleton.h"
#include "tests/support/childProcess.h"

#include <barrier>
#include <gtest/gtest.h>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::inChildProcess;

template <int>
class Lazy {
public:
    static inline std::atomic<int> created{0};
    static inline std::atomic<int> destroyed{0};
    static inline bool fails = false;
    int value = 5;

    Lazy() {
        if (std::exchange(fails, false)) throw std::runtime_error("not yet");
        for (int times = 0; times < 100; ++times)
            std::this_thread::yield(); // so that other threads arrive
        ++created;
    }
    // The object exists until its destructor has returned, as its members may need it.
    ~Lazy() { destroyed += &LkSingleton<Lazy>::getInstance() == this ? 1 : 100; }
};

TEST(LkSingleton, IsCreatedOnceByManyThreadsAlsoAfterAConstructorThrew) {
    using Singleton = LkSingleton<Lazy<1>>;
    Lazy<1>::fails = true;
    EXPECT_THROW(Singleton::getInstance(), std::runtime_error);
    EXPECT_EQ(Singleton::UNINITIALIZED, Singleton::getState());
    constexpr int threads = 8;
    std::barrier start(threads);
    std::vector<std::jthread> pool;
    for (int index = 0; index < threads; ++index)
        pool.emplace_back([&] {
            start.arrive_and_wait();
            EXPECT_EQ(5, Singleton::getInstance().value);
        });
    pool.clear();
    EXPECT_EQ(1, Lazy<1>::created);
    EXPECT_STREQ("INITIALIZED", Singleton::getStateName());
    EXPECT_NO_THROW(Singleton::checkClassInvariants());
}

TEST(LkSingleton, IsTheSameInAllLibrariesOfTheProcess) {
    EXPECT_EQ(&LkSingleton<KoTest::SharedSingleton>::getInstance(), &KoTest::seenFromAnotherLibrary());
}

// Prints the state of a singleton at process end. Constructed before the destroyers of the singletons, so that it is
// destroyed after them.
template <int number>
struct Reporter {
    ~Reporter() {
        using Singleton = LkSingleton<Lazy<number>>;
        if (!enabled) return;
        std::cerr << Singleton::getStateName() << " " << Lazy<number>::destroyed << " ";
        Singleton::checkClassInvariants();
        try {
            Singleton::getInstance();
        } catch (ExAssertionFailed const& error) {
            std::cerr << error.what() << " " << error.getFile() << " " << error.getLine() << ";";
        }
    }
    bool enabled = false;
};
__attribute__((init_priority(200))) Reporter<4> unusedReporter;
__attribute__((init_priority(201))) Reporter<3> reporter;

TEST(LkSingleton, IsDestroyedAtProcessEndAndNeverCreatedAgain) {
    inChildProcess(
        [] {
            LkSingleton<Lazy<3>>::getInstance();
            EXPECT_STREQ("UNINITIALIZED", LkSingleton<Lazy<4>>::getStateName());
            reporter.enabled = unusedReporter.enabled = true;
        },
        "^DESTROYED 1 _state == UNINITIALIZED \\..resmgt/lkSingleton.imp.h 124;"
        "DESTROYED 0 _state == UNINITIALIZED \\..resmgt/lkSingleton.imp.h 124;$");
}

} // namespace
