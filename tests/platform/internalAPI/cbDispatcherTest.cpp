#include "internalAPI/cbDispatcher.h"
#include "tests/support/logRecorder.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>

namespace {

using namespace Ko;
using KoTest::LogRecorder;

class CbDispatcherTest : public testing::Test {
protected:
    class Handler : public CbHandler<CbEmptyType> {
    public:
        void call(CbEmptyType const&) override {
            *calls += name;
            if (then) then();
        }
        char name = ' ';
        std::string* calls = nullptr;
        std::function<void()> then;
    };

    Handler& operator[](char name) {
        Handler& handler = handlers[name];
        handler.name = name;
        handler.calls = &calls;
        return handler;
    }
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
    std::string calls;
    std::unique_ptr<CbDispatcher<CbEmptyType>> dispatcher = std::make_unique<CbDispatcher<CbEmptyType>>();
};

TEST_F(CbDispatcherTest, CallsInTheOrderOfRegistrationAsOftenAsRegistered) {
    EXPECT_TRUE(dispatcher->isEmpty());
    add("abca");
    EXPECT_EQ("abca", call());
    remove('a');
    remove('x');
    EXPECT_EQ("bca", call());
}

TEST_F(CbDispatcherTest, HandlersMayRemoveThemselvesAndOthersAndAddNewOnes) {
    struct Row {
        std::function<void()> then; // of b, in "abcd"
        char const* first;
        char const* next;
    };
    for (Row const& row : {Row{[this] { remove('b'); }, "abcd", "acd"}, Row{[this] { remove('a'); }, "abcd", "bcd"},
             Row{[this] { remove('d'); }, "abc", "abc"}, Row{[this] { add("e"); }, "abcd", "abcde"},
             Row{[this] {
                     remove('c');
                     add("c");
                 },
                 "abd", "abdc"}}) {
        dispatcher = std::make_unique<CbDispatcher<CbEmptyType>>();
        add("abcd");
        (*this)['b'].then = [this, &row] {
            (*this)['b'].then = nullptr;
            row.then();
        };
        EXPECT_EQ(row.first, call());
        EXPECT_EQ(row.next, call());
    }
}

TEST_F(CbDispatcherTest, HandlersMayDispatchAgain) {
    add("abc");
    (*this)['b'].then = [this] {
        (*this)['b'].then = nullptr;
        remove('a');
        dispatcher->call({});
    };
    EXPECT_EQ("abbcc", call());
    EXPECT_EQ("bc", call());
}

TEST_F(CbDispatcherTest, AHandlerMayDestroyTheDispatcherFromWithinSeveralCalls) {
    add("abc");
    (*this)['a'].then = [this] {
        (*this)['a'].then = nullptr;
        dispatcher->call({});
    };
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

} // namespace
