#include "base/inSingleton.imp.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

struct Counted : InSingleton<Counted> {
    static inline int alive = 0;
    Counted() { ++alive; }
    ~Counted() { --alive; }
};

template <class Exception, class Call>
void expectMisuse(int line, Call call) {
    auto const error = KoTest::caught<Exception>(call);
    EXPECT_STREQ(".\\base/inSingleton.imp.h", error.getFile());
    EXPECT_EQ(line, error.getLine());
    EXPECT_NE(std::string::npos, error.getReason().find("Counted"));
}

TEST(InSingleton, LivesOnceAndReportsEveryMisuseWithoutChange) {
    using Singleton = InSingleton<Counted>;
    expectMisuse<InSingletonEx::ExNotInitialized>(104, [] { Singleton::getInstance(); });
    expectMisuse<InSingletonEx::ExNotInitialized>(83, [] { Singleton::performFinalize(); });

    Singleton::performInitialize();
    Counted* const object = &Singleton::getInstance();
    expectMisuse<InSingletonEx::ExAlreadyInitialized>(60, [] { Singleton::performInitialize(); });
    EXPECT_EQ(object, &Singleton::getInstance());
    Singleton::performFinalize();
    EXPECT_EQ(0, Counted::alive);
    expectMisuse<InSingletonEx::ExNotInitialized>(104, [] { Singleton::getInstance(); });
    expectMisuse<InSingletonEx::ExAlreadyDestroyed>(88, [] { Singleton::performFinalize(); });
    expectMisuse<InSingletonEx::ExAlreadyDestroyed>(65, [] { Singleton::performInitialize(); });
    EXPECT_EQ(0, Counted::alive);
}

} // namespace
