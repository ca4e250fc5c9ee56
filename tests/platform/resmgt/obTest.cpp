#include "base/exBase.h"
#include "resmgt/obChangeManager.imp.h"
#include "tests/support/logRecorder.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

struct Tag {};
struct OtherTag {};

class Subject : public ObSubject<Tag> {};

class Hint : public ObHint {
public:
    explicit Hint(int value = 0) : number(value) {}
    int number;
};
class DerivedHint : public Hint {};

/// Records "name", or "+name" and "-name" for attachment and detachment, and does what the test asks.
class Observer : public ObObserver<Tag> {
public:
    Observer(std::string name, std::string& journal, std::function<void()> then = {})
        : _name(std::move(name)), _journal(journal), onUpdate(std::move(then)) {}

private:
    void attachedTo(ObSubject<Tag>*) override { _journal += "+" + _name; }
    void detachedFrom(ObSubject<Tag>*) override {
        _journal += "-" + _name;
        auto const then = onDetached; // kept alive, also if the observer ends here
        if (then) then();
    }
    void update(ObObserver<Tag> const* observer, ObHints const&) override {
        EXPECT_EQ(this, observer);
        _journal += _name;
        auto const then = onUpdate;
        if (then) then();
    }

    std::string _name;
    std::string& _journal;

public:
    std::function<void()> onUpdate;
    std::function<void()> onDetached;
};

class ObTest : public testing::Test {
protected:
    std::string notify(Subject& notified) {
        journal.clear();
        notified.notify(ObHints());
        return journal;
    }
    std::string notify() { return notify(subject); }

    std::string journal;
    Subject subject;
};

TEST(ObHints, FindsAHintByItsExactClass) {
    ObHints hints;
    EXPECT_EQ(nullptr, hints.pickHint<Hint>());
    hints.add(RCShdPtr<DerivedHint>::create());
    EXPECT_EQ(nullptr, hints.pickHint<Hint>());
    for (int number = 1; number <= 4; ++number)
        hints.add(RCShdPtr<Hint>::create(number));
    EXPECT_EQ(1, hints.pickHint<Hint>()->number) << "the first one";
    EXPECT_NE(nullptr, hints.pickHint<DerivedHint>());
    EXPECT_EQ(5u, hints.size());
    EXPECT_EQ(4, hints[4].dynamicCast<Hint>()->number);
    EXPECT_THROW(hints.add(nullptr), ExNullPtr);
}

TEST_F(ObTest, TellsInTheOrderOfAttachmentUntilDetached) {
    Observer a("a", journal);
    Observer b("b", journal);
    EXPECT_FALSE(subject.hasObservers());
    EXPECT_TRUE(subject.attachObserver(&a));
    EXPECT_TRUE(subject.attachObserver(&b));
    EXPECT_FALSE(subject.attachObserver(&a));
    EXPECT_EQ("+a+b", journal);
    EXPECT_EQ("ab", notify());
    EXPECT_TRUE(subject.detachObserver(&a));
    EXPECT_FALSE(subject.detachObserver(&a));
    EXPECT_EQ("ab-a", journal);
    EXPECT_EQ("b", notify());
    subject.attachObserver(&a);
    EXPECT_EQ("ba", notify());
    EXPECT_THROW(subject.attachObserver(nullptr), ExNullPtr);
    EXPECT_THROW(subject.detachObserver(nullptr), ExNullPtr);
}

TEST_F(ObTest, EndsWithTheSubjectOrTheObserverWhicheverGoesFirst) {
    auto a = std::make_unique<Observer>("a", journal);
    Observer b("b", journal);
    auto other = std::make_unique<Subject>();
    for (Observer* const observer : {a.get(), &b}) {
        subject.attachObserver(observer);
        other->attachObserver(observer);
    }
    journal.clear();
    other.reset();
    EXPECT_EQ("-a-b", journal);
    a.reset();
    EXPECT_EQ("b", notify());
}

TEST_F(ObTest, DeliversNothingToObserversOfOtherTagsAndDisabledOnes) {
    class Quiet : public Observer {
    public:
        using Observer::Observer;
        using ObObserver<Tag>::disableUpdates;
    };
    Quiet quiet("q", journal);
    Observer a("a", journal);
    subject.attachObserver(&quiet);
    subject.attachObserver(&a);
    quiet.disableUpdates();
    EXPECT_EQ("a", notify());
    ObSubject<OtherTag>* const none = nullptr;
    static_assert(!std::is_convertible_v<decltype(none), ObSubject<Tag>*>);
}

TEST_F(ObTest, LetsObserversAttachAndDetachWhileTheyAreTold) {
    Observer late("l", journal);
    Observer c("c", journal);
    Observer b("b", journal, [&] {
        subject.detachObserver(&c); // comes next
        subject.detachObserver(&b); // itself
        subject.attachObserver(&late);
    });
    Observer a("a", journal);
    Observer d("d", journal);
    for (Observer* const observer : {&a, &b, &c, &d})
        subject.attachObserver(observer);
    EXPECT_EQ("ab-c-b+ld", notify());
    EXPECT_EQ("adl", notify());
    // Detached and attached again: told the next time.
    a.onUpdate = [&] {
        subject.detachObserver(&a);
        subject.attachObserver(&a);
    };
    EXPECT_EQ("a-a+adl", notify());
    EXPECT_EQ("dla-a+a", notify());
}

TEST_F(ObTest, LetsObserversEndWhileTheyAreTold) {
    auto a = std::make_unique<Observer>("a", journal);
    auto b = std::make_unique<Observer>("b", journal);
    auto c = std::make_unique<Observer>("c", journal);
    for (Observer* const observer : {a.get(), b.get(), c.get()})
        subject.attachObserver(observer);
    a->onUpdate = [&] {
        b.reset();
        a.reset();
    };
    EXPECT_EQ("ac", notify());
    EXPECT_EQ("c", notify());
}

TEST_F(ObTest, LetsTheSubjectEndWhileItTells) {
    auto ending = std::make_unique<Subject>();
    Observer a("a", journal, [&] { ending.reset(); });
    Observer b("b", journal);
    ending->attachObserver(&a);
    ending->attachObserver(&b);
    EXPECT_EQ("a-a-b", notify(*ending));
    // An observer may also end with its subject.
    auto c = std::make_unique<Observer>("c", journal);
    ending = std::make_unique<Subject>();
    c->onDetached = [&] { std::make_unique<Observer>("x", journal).swap(c); };
    ending->attachObserver(c.get());
    ending->attachObserver(&b);
    journal.clear();
    ending.reset();
    EXPECT_EQ("-c-b", journal);
}

TEST_F(ObTest, NestsNotifications) {
    int depth = 0;
    Observer a("a", journal, [&] {
        if (++depth == 1) subject.notify(ObHints());
    });
    Observer b("b", journal);
    subject.attachObserver(&a);
    subject.attachObserver(&b);
    EXPECT_EQ("aabb", notify());
}

TEST_F(ObTest, LogsWhatAnObserverThrowsAndTellsTheOthers) {
    LogRecorder const log;
    Observer a("a", journal, [] { throw std::runtime_error("first"); });
    Observer b("b", journal, [] { throw 5; });
    Observer c("c", journal);
    for (Observer* const observer : {&a, &b, &c})
        subject.attachObserver(observer);
    EXPECT_EQ("abc", notify());
    EXPECT_EQ(2u, log.lines().size());
}

// An observer that notices an update after its end, or one that is still running then.
class Mortal : public ObObserver<Tag> {
public:
    ~Mortal() override {
        disableUpdates();
        EXPECT_EQ(0, _inside);
        _alive = false;
    }

private:
    void update(ObObserver const*, ObHints const&) override {
        ++_inside;
        EXPECT_TRUE(_alive);
        std::this_thread::yield();
        EXPECT_TRUE(_alive);
        --_inside;
    }

    std::atomic<int> _inside{0};
    std::atomic<bool> _alive{true};
};

/// Ten threads that notify while the test does something.
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

TEST(ObRace, NoUpdateComesAfterTheEndOfAnObserver) {
    std::vector<Subject> subjects(3);
    Notifiers const notifiers(subjects);
    for (int round = 0; round < 2000; ++round) {
        auto const observer = std::make_unique<Mortal>();
        for (Subject& subject : subjects)
            subject.attachObserver(observer.get());
        if (round % 2) subjects[1].detachObserver(observer.get());
    }
}

TEST(ObRace, NoUpdateRunsAfterADetachment) {
    std::vector<Subject> subjects(1);
    Notifiers const notifiers(subjects);
    int plain = 0; // unsafe to touch from two threads at once
    std::atomic<int> turn{0};
    class Writer : public ObObserver<Tag> {
    public:
        explicit Writer(std::function<void()> write) : _write(std::move(write)) {}

    private:
        void update(ObObserver const*, ObHints const&) override { _write(); }
        std::function<void()> _write;
    } writer([&] {
        if (turn.exchange(1) == 0) {
            ++plain;
            turn = 0;
        }
    });
    for (int round = 0; round < 2000; ++round) {
        subjects[0].attachObserver(&writer);
        std::this_thread::yield();
        EXPECT_TRUE(subjects[0].detachObserver(&writer));
        --plain;
    }
}

TEST(ObRace, ObserversComeAndGoFromInsideUpdatesOnAllThreads) {
    std::vector<Subject> subjects(2);
    std::vector<std::unique_ptr<Mortal>> guests;
    for (int guest = 0; guest < 4; ++guest)
        guests.push_back(std::make_unique<Mortal>());
    std::atomic<unsigned> turns{0};
    class Host : public ObObserver<Tag> {
    public:
        explicit Host(std::function<void()> act) : _act(std::move(act)) {}
        ~Host() override { disableUpdates(); }

    private:
        void update(ObObserver const*, ObHints const&) override { _act(); }
        std::function<void()> _act;
    } host([&] {
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

TEST(ObRace, SubjectsAndObserversEndAtTheSameTime) {
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
