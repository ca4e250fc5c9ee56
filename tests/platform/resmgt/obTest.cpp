#include "base/exBase.h"
#include "resmgt/obChangeManager.imp.h"
#include "tests/support/logRecorder.h"

#include <atomic>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

struct Tag {};
class Subject : public ObSubject<Tag> {};
class Hint : public ObHint {};
class DerivedHint : public Hint {};

/// Calls a function of the test for each update.
struct Actor : ObObserver<Tag> {
    explicit Actor(std::function<void()> then = {}) : onUpdate(std::move(then)) {}
    ~Actor() override { disableUpdates(); }
    using ObObserver::disableUpdates;
    void update(ObObserver const* observer, ObHints const&) override {
        EXPECT_EQ(this, observer);
        auto const then = onUpdate; // outlives the observer if the function destroys it
        if (then) then();
    }
    std::function<void()> onUpdate;
};

/// Records "name", or "+name" and "-name" for attachment and detachment.
class Observer : public Actor {
public:
    Observer(std::string name, std::string& journal) : _name(std::move(name)), _journal(journal) {}
    std::function<void()> onDetached;

private:
    void attachedTo(ObSubject<Tag>*) override { _journal += "+" + _name; }
    void detachedFrom(ObSubject<Tag>*) override {
        _journal += "-" + _name;
        auto const then = onDetached;
        if (then) then();
    }
    void update(ObObserver const* observer, ObHints const& hints) override {
        _journal += _name;
        Actor::update(observer, hints);
    }

    std::string _name;
    std::string& _journal;
};

class ObTest : public testing::Test {
protected:
    static void attach(Subject& to, std::initializer_list<Observer*> observers) {
        for (Observer* const observer : observers)
            to.attachObserver(observer);
    }
    std::string notify(Subject& notified) {
        journal.clear();
        notified.notify(ObHints());
        return journal;
    }
    std::string notify() { return notify(subject); }

    std::string journal;
    Observer a{"a", journal}, b{"b", journal}, c{"c", journal};
    Subject subject;
};

TEST(ObHints, FindsTheFirstHintOfExactlyItsClass) {
    ObHints hints;
    hints.add(RCShdPtr<DerivedHint>::create());
    EXPECT_EQ(nullptr, hints.pickHint<Hint>());
    hints.add(RCShdPtr<Hint>::create());
    hints.add(RCShdPtr<Hint>::create());
    EXPECT_EQ(hints[1].get(), hints.pickHint<Hint>().get());
    EXPECT_EQ(hints[0].get(), hints.pickHint<DerivedHint>().get());
    EXPECT_THROW(hints.add(nullptr), ExNullPtr);
}

TEST_F(ObTest, NotifiesInTheOrderOfAttachmentUntilDetached) {
    EXPECT_TRUE(subject.attachObserver(&a));
    EXPECT_TRUE(subject.attachObserver(&b));
    EXPECT_FALSE(subject.attachObserver(&a));
    EXPECT_EQ("+a+b", journal);
    EXPECT_EQ("ab", notify());
    EXPECT_TRUE(subject.detachObserver(&a));
    EXPECT_FALSE(subject.detachObserver(&a));
    EXPECT_EQ("ab-a", journal);
    subject.attachObserver(&a);
    EXPECT_EQ("ba", notify());
    b.disableUpdates();
    EXPECT_EQ("a", notify());
    EXPECT_THROW(subject.attachObserver(nullptr), ExNullPtr);
    EXPECT_THROW(subject.detachObserver(nullptr), ExNullPtr);
}

TEST_F(ObTest, DetachesAtTheEndOfTheSubjectOrTheObserver) {
    auto ending = std::make_unique<Observer>("e", journal);
    auto other = std::make_unique<Subject>();
    for (Subject* const attached : {&subject, other.get()})
        attach(*attached, {ending.get(), &b});
    journal.clear();
    other.reset();
    EXPECT_EQ("-e-b", journal);
    ending.reset();
    EXPECT_EQ("b", notify());
}

TEST_F(ObTest, AllowsAttachingAndDetachingInAnUpdate) {
    Observer d("d", journal), late("l", journal);
    attach(subject, {&a, &b, &c, &d});
    b.onUpdate = [&] {
        subject.detachObserver(&c); // the next one
        subject.detachObserver(&b); // itself
        subject.attachObserver(&late);
    };
    EXPECT_EQ("ab-c-b+ld", notify());
    EXPECT_EQ("adl", notify());
    // Detached and attached again: notified the next time.
    a.onUpdate = [&] {
        subject.detachObserver(&a);
        subject.attachObserver(&a);
    };
    EXPECT_EQ("a-a+adl", notify());
    EXPECT_EQ("dla-a+a", notify());
}

TEST_F(ObTest, AllowsDestroyingObserversInAnUpdate) {
    auto first = std::make_unique<Observer>("1", journal);
    auto second = std::make_unique<Observer>("2", journal);
    attach(subject, {first.get(), second.get(), &c});
    first->onUpdate = [&] {
        second.reset();
        first.reset();
    };
    EXPECT_EQ("1c", notify());
    EXPECT_EQ("c", notify());
}

TEST_F(ObTest, AllowsDestroyingTheSubjectInAnUpdate) {
    auto ending = std::make_unique<Subject>();
    a.onUpdate = [&] { ending.reset(); };
    attach(*ending, {&a, &b});
    EXPECT_EQ("a-a-b", notify(*ending));
    // An observer can also be destroyed in `detachedFrom`.
    auto leaving = std::make_unique<Observer>("l", journal);
    ending = std::make_unique<Subject>();
    leaving->onDetached = [&] { std::make_unique<Observer>("x", journal).swap(leaving); };
    attach(*ending, {leaving.get(), &b});
    journal.clear();
    ending.reset();
    EXPECT_EQ("-l-b", journal);
}

TEST_F(ObTest, AllowsNestedNotifications) {
    a.onUpdate = [&] {
        a.onUpdate = nullptr;
        subject.notify(ObHints());
    };
    attach(subject, {&a, &b});
    EXPECT_EQ("aabb", notify());
}

TEST_F(ObTest, LogsExceptionsAndNotifiesTheOtherObservers) {
    LogRecorder const log;
    a.onUpdate = [] { throw std::runtime_error("first"); };
    b.onUpdate = [] { throw 5; };
    attach(subject, {&a, &b, &c});
    EXPECT_EQ("abc", notify());
    EXPECT_EQ(2u, log.lines().size());
}

// Detects an update that runs during or after the destruction.
struct Mortal : ObObserver<Tag> {
    ~Mortal() override {
        disableUpdates();
        EXPECT_EQ(0, inside);
        isAlive = false;
    }
    void update(ObObserver const*, ObHints const&) override {
        inside.fetch_add(1, std::memory_order_relaxed);
        EXPECT_TRUE(isAlive);
        std::this_thread::yield();
        EXPECT_TRUE(isAlive);
        inside.fetch_sub(1, std::memory_order_relaxed);
    }
    bool isAlive = true; // not atomic: a read during the destructor is a race
    std::atomic<int> inside{0};
};

/// Ten threads that notify during the lifetime of this object.
class Notifiers {
public:
    explicit Notifiers(std::vector<Subject>& subjects) {
        for (int thread = 0; thread < 10; ++thread)
            _threads.emplace_back([this, &subjects] {
                _running.arrive_and_wait();
                while (!_stopping)
                    for (Subject& subject : subjects)
                        subject.notify(ObHints());
            });
        _running.arrive_and_wait();
    }
    ~Notifiers() { _stopping = true; }

private:
    std::latch _running{11};
    std::atomic<bool> _stopping{false};
    std::vector<std::jthread> _threads;
};

TEST(ObRace, NoUpdateRunsAfterADetachmentOrADestruction) {
    std::vector<Subject> subjects(3);
    Notifiers const notifiers(subjects);
    for (int round = 0; round < 100; ++round) {
        Mortal ending, leaving;
        for (Subject& subject : subjects)
            subject.attachObserver(&ending);
        subjects[0].attachObserver(&leaving);
        std::this_thread::yield();
        EXPECT_TRUE(subjects[0].detachObserver(&leaving));
        EXPECT_EQ(0, leaving.inside);
        if (round % 2) subjects[1].detachObserver(&ending);
    }
}

TEST(ObRace, UpdatesOnAllThreadsAttachAndDetachObservers) {
    std::vector<Subject> subjects(2);
    std::vector<std::unique_ptr<Mortal>> guests;
    for (int guest = 0; guest < 4; ++guest)
        guests.push_back(std::make_unique<Mortal>());
    std::atomic<unsigned> turns{0};
    Actor host([&] {
        unsigned const now = ++turns;
        Mortal* const guest = guests[now % guests.size()].get();
        if (now % 3)
            subjects[now % 2].attachObserver(guest);
        else
            subjects[now % 2].detachObserver(guest);
        if (now % 7 == 0) {
            subjects[1].detachObserver(&host);
            subjects[1].attachObserver(&host);
        }
    });
    subjects[0].attachObserver(&host);
    subjects[1].attachObserver(&host);
    Notifiers const notifiers(subjects);
    while (turns < 20000)
        std::this_thread::yield();
}

// After a subscription that ended inside its own call, calls on other threads may still run: what they use outlives them.
struct SelfEnding {
    ObSubscription own;
    std::mutex mutex;
};

TEST(ObRace, NoCallFollowsTheEndOfASubscription) {
    std::vector<Subject> subjects(2);
    std::atomic<unsigned> turn{0};
    std::deque<SelfEnding> rounds(500);
    Notifiers const notifiers(subjects);
    for (SelfEnding& round : rounds) {
        Mortal target;
        auto const endItself = [&](ObHints const&) {
            if (++turn % 5 > 0) return;
            // Fails while the test ends the subscription, which waits for this call.
            if (std::unique_lock const lock(round.mutex, std::try_to_lock); lock) round.own.end();
        };
        {
            std::lock_guard const guard(round.mutex);
            round.own = subjects[0].subscribe(endItself, ObDelivery::Here);
        }
        auto const other =
            subjects[1].subscribe([&](ObHints const& hints) { target.update(&target, hints); }, ObDelivery::Here);
        if (turn % 4 == 0) std::this_thread::yield();
        std::lock_guard const guard(round.mutex);
        round.own = {};
    }
}

TEST(ObRace, SubjectsAndObserversAreDestroyedAtTheSameTime) {
    for (int round = 0; round < 2000; ++round) {
        auto subject = std::make_unique<Subject>();
        auto observer = std::make_unique<Mortal>();
        Subject other;
        subject->attachObserver(observer.get());
        other.attachObserver(observer.get());
        std::latch together(2);
        std::jthread const ending([&] {
            together.arrive_and_wait();
            subject.reset();
        });
        together.arrive_and_wait();
        observer.reset();
    }
}

} // namespace
