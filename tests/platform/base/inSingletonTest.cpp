#include "base/inSingleton.imp.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

// Each test has a singleton of its own: one lives only once in a process.
template <int>
class Counted : public InSingleton<Counted<0>> {
public:
    static inline int alive = 0;
    Counted() { ++alive; }
    ~Counted() { --alive; }
};

template <class Exception, class Call>
void expectMisuse(int line, Call call) {
    try {
        call();
        FAIL() << "not raised";
    } catch (Exception const& error) {
        EXPECT_STREQ(".\\base/inSingleton.imp.h", error.getFile());
        EXPECT_EQ(line, error.getLine());
        EXPECT_NE(std::string::npos, error.getReason().find("Counted<0>"));
    }
}

TEST(InSingleton, LivesOnceAndReportsEveryMisuseWithoutChange) {
    using Object = Counted<0>;
    using Singleton = InSingleton<Object>;
    expectMisuse<InSingletonEx::ExNotInitialized>(104, [] { Singleton::getInstance(); });
    expectMisuse<InSingletonEx::ExNotInitialized>(83, [] { Singleton::performFinalize(); });

    Singleton::performInitialize();
    Object* const object = &Singleton::getInstance();
    expectMisuse<InSingletonEx::ExAlreadyInitialized>(60, [] { Singleton::performInitialize(); });
    EXPECT_EQ(object, &Singleton::getInstance());
    EXPECT_EQ(1, Object::alive);

    Singleton::performFinalize();
    EXPECT_EQ(0, Object::alive);
    expectMisuse<InSingletonEx::ExNotInitialized>(104, [] { Singleton::getInstance(); });
    expectMisuse<InSingletonEx::ExAlreadyDestroyed>(88, [] { Singleton::performFinalize(); });
    expectMisuse<InSingletonEx::ExAlreadyDestroyed>(65, [] { Singleton::performInitialize(); });
    EXPECT_EQ(0, Object::alive);
}

} // namespace
