#include "base/evEventManager.h"
#include "base/exBase.h"
#include "resmgt/obChangeManager.imp.h"
#include "tests/support/logRecorder.h"

#include <atomic>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

struct Tag {};
class Subject : public ObSubject<Tag> {};
class Hint : public ObHint {};
class DerivedHint : public Hint {};

class Subscriptions : public testing::Test {
protected:
    ObSubscription follow(char name, ObDelivery delivery, std::function<void()> then = {}) {
        return subject.subscribe(
            [this, name, then = std::move(then)](ObHints const&) {
                journal += name;
                if (then) then();
            },
            delivery);
    }
    std::string notify() {
        subject.notify(ObHints());
        return std::exchange(journal, {});
    }
    std::string process() {
        EvEventManager::getInstance().processEvents();
        return std::exchange(journal, {});
    }
    static constexpr ObDelivery here = ObDelivery::Here, there = ObDelivery::ApplicationThread;

    std::string journal;
    Subject subject;
};

TEST_F(Subscriptions, DeliverInOrderUntilTheirEnd) {
    ObSubscription const first = follow('1', here);
    ObSubscription second = follow('2', there);
    auto const hints = subject.on<Hint>([this](Hint const&) { journal += 'h'; });
    EXPECT_EQ("1", notify());
    EXPECT_EQ("2", process());
    subject.notify(ObHints(RCShdPtr<Hint>::create()));
    subject.notify(ObHints(RCShdPtr<DerivedHint>::create()));
    EXPECT_EQ("112h2", process());
    notify();
    second.end(); // its event has been posted
    EXPECT_EQ("", process());
    ObHints deferred(RCShdPtr<Hint>::create());
    deferred.setDeferred();
    subject.notify(deferred);
    EXPECT_EQ("1h", journal) << "no event of its own";
    EXPECT_THROW(static_cast<void>(subject.subscribe({}, here)), ExNullPtr);
}

TEST_F(Subscriptions, MayEndInTheirCallsAndOutliveTheirSubject) {
    LogRecorder const log;
    for (ObDelivery const delivery : {here, there}) {
        auto const token = std::make_shared<int>(0);
        ObSubscription own;
        own = follow('e', delivery, [&own, token] {
            own.end();
            EXPECT_EQ(2, token.use_count()) << "the callable is destroyed after its call";
            throw std::runtime_error("bad subscriber");
        });
        auto const other = follow('o', delivery);
        EXPECT_EQ(delivery == here ? "eo" : "", notify());
        EXPECT_EQ(delivery == here ? "o" : "", notify());
        EXPECT_EQ(delivery == here ? "" : "eoo", process());
        EXPECT_EQ(1, token.use_count());
    }
    EXPECT_EQ(2u, log.lines().size());
    auto ending = std::make_unique<Subject>();
    auto const token = std::make_shared<int>(0);
    ObSubscription orphan = ending->subscribe([token](ObHints const&) {}, here);
    ending.reset();
    EXPECT_EQ(2, token.use_count());
    orphan.end();
    EXPECT_EQ(1, token.use_count());
}

TEST_F(Subscriptions, WaitForACallOnAnotherThread) {
    for (ObDelivery const delivery : {here, there}) {
        std::latch inside(1);
        std::atomic<bool> hasReturned{false};
        auto ending = std::make_unique<ObSubscription>(follow('c', delivery, [&] {
            inside.count_down();
            std::this_thread::yield();
            hasReturned = true;
        }));
        auto end = std::async(std::launch::async, [&] {
            inside.wait();
            ending.reset();
            EXPECT_TRUE(hasReturned);
        });
        notify();
        process();
        end.get();
    }
}

} // namespace
