#include "internalAPI/cbDispatcher.h"
#include "tests/support/logRecorder.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdexcept>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

std::string calls;

/// Writes its name, and calls a function of the test once.
struct Handler : CbHandler<CbEmptyType> {
    explicit Handler(char itsName) : name(itsName) {}
    void call(CbEmptyType const&) override {
        calls += name;
        if (auto const now = std::exchange(then, nullptr)) now();
    }
    char name;
    std::function<void()> then;
};

class CbDispatcherTest : public testing::Test {
protected:
    Handler& operator[](char name) { return handlers.try_emplace(name, name).first->second; }
    void add(std::string const& names) {
        for (char const name : names)
            dispatcher->add(&(*this)[name]);
    }
    void remove(char name) { dispatcher->remove(&(*this)[name]); }
    std::string call() {
        calls.clear();
        dispatcher->call({});
        return calls;
    }

    std::map<char, Handler> handlers;
    std::unique_ptr<CbDispatcher<CbEmptyType>> dispatcher = std::make_unique<CbDispatcher<CbEmptyType>>();
};

TEST_F(CbDispatcherTest, CallsInTheOrderOfRegistrationAsOftenAsRegistered) {
    add("abca");
    EXPECT_EQ("abca", call());
    remove('a');
    remove('x');
    EXPECT_EQ("bca", call());
}

TEST_F(CbDispatcherTest, HandlersMayRemoveThemselvesAndOthersAndAddNewOnes) {
    // The handlers that b removes and adds in "abcd", the calls of that time, and those of the next time.
    using Row = std::array<std::string, 4>;
    for (auto const& row : {Row{"b", "", "abcd", "acd"}, Row{"a", "", "abcd", "bcd"}, Row{"d", "", "abc", "abc"},
             Row{"", "e", "abcd", "abcde"}, Row{"c", "c", "abd", "abdc"}}) {
        dispatcher = std::make_unique<CbDispatcher<CbEmptyType>>();
        add("abcd");
        (*this)['b'].then = [this, &row] {
            if (!row[0].empty()) remove(row[0][0]);
            add(row[1]);
        };
        EXPECT_EQ(row[2], call());
        EXPECT_EQ(row[3], call());
    }
}

TEST_F(CbDispatcherTest, HandlersMayDispatchAgain) {
    add("abcd");
    (*this)['b'].then = [this] {
        remove('a');
        dispatcher->call({});
    };
    EXPECT_EQ("abbcdcd", call());
    EXPECT_EQ("bcd", call());
}

TEST_F(CbDispatcherTest, AHandlerMayDestroyTheDispatcherFromWithinSeveralCalls) {
    add("abc");
    (*this)['a'].then = [this] { dispatcher->call({}); };
    (*this)['b'].then = [this] { dispatcher.reset(); };
    EXPECT_EQ("aab", call());
}

TEST_F(CbDispatcherTest, CallsAllRethrowsTheFirstErrorAndLogsTheOthers) {
    add("abc");
    (*this)['a'].then = [] { throw std::runtime_error("first"); };
    (*this)['b'].then = [] { throw std::logic_error("second"); };
    LogRecorder const log;
    EXPECT_THROW(call(), std::runtime_error);
    EXPECT_EQ("abc", calls);
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_NE(std::string::npos, log.lines()[0].find("second"));
}

TEST_F(CbDispatcherTest, ASubscriptionTakesItsTurnAndEndsWithItsScope) {
    add("a");
    {
        CbSubscription first = dispatcher->subscribe([] { calls += '1'; });
        CbSubscription const second = dispatcher->subscribe([] { calls += '2'; });
        add("b");
        EXPECT_EQ("a12b", call());
        first = dispatcher->subscribe([] { calls += '3'; });
        EXPECT_EQ("a2b3", call());
    }
    EXPECT_EQ("ab", call());
}

TEST_F(CbDispatcherTest, ASubscriptionMayEndItselfAndOthersInsideItsCall) {
    // Writes its name when it is destroyed, which must happen after the call has returned.
    auto const witness = [](char name) { return std::shared_ptr<void>(nullptr, [name](void*) { calls += name; }); };
    CbSubscription own, next;
    own = dispatcher->subscribe([&own, &next, witness = witness('x')] {
        own.end();
        next.end();
        calls += '1';
    });
    next = dispatcher->subscribe([witness = witness('y')] { calls += '2'; });
    add("a");
    EXPECT_EQ("y1xa", call());
    EXPECT_EQ("a", call());
}

TEST_F(CbDispatcherTest, ASubscriptionMayOutliveTheDispatcherAlsoWhereItDestroysIt) {
    CbSubscription const bystander = dispatcher->subscribe([] { calls += '1'; });
    CbSubscription subscription = dispatcher->subscribe([this] {
        calls += '2';
        dispatcher.reset();
    });
    add("a");
    EXPECT_EQ("12", call());
    subscription.end();
}

} // namespace
