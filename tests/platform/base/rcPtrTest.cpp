#include "base/exBase.h"
#include "base/rcShdPtr.h"
#include "base/rcWeakPtr.h"

#include <atomic>
#include <barrier>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using namespace Ko;

class Base : public RCBase {
public:
    static inline std::atomic<int> alive{0};
    Base() { ++alive; }
    ~Base() override { --alive; }
    int value = 7;
};
class Derived : public Base {};

TEST(RCShdPtr, SharesOwnershipAcrossTypesAndDeletesOnce) {
    {
        RCShdPtr<Derived> const derived = RCShdPtr<Derived>::create();
        RCShdPtr<Base> base = derived;
        RCShdPtr<Base const> constant = base;
        EXPECT_EQ(3u, derived->getReferenceCount());
        EXPECT_TRUE(constant == derived);
        EXPECT_TRUE(base.dynamicCast<Derived>() == derived);
        RCShdPtr<Base> moved = std::move(base);
        EXPECT_TRUE(base.isNull());
        EXPECT_EQ(3u, derived->getReferenceCount());
        RCShdPtr<Base>& self = moved;
        moved = self;
        EXPECT_EQ(7, moved->value);
    }
    EXPECT_EQ(0, Base::alive);
}

TEST(RCShdPtr, RaisesTheNullPointerExceptionNamingTheType) {
    RCShdPtr<Derived> const null;
    try {
        static_cast<void>(null->value);
        FAIL() << "not raised";
    } catch (ExNullPtr const& error) {
        EXPECT_NE(std::string::npos, error.getReason().find("Derived"));
    }
}

TEST(RCWeakPtr, NeitherKeepsNorRevivesItsObject) {
    RCShdPtr<Derived> owner = RCShdPtr<Derived>::create();
    RCWeakPtr<Base> const weak(owner);
    RCWeakPtr<Base> const other(owner.get());
    EXPECT_TRUE(weak.lock() == owner);
    EXPECT_EQ(1u, owner->getReferenceCount());
    owner.reset();
    EXPECT_EQ(0, Base::alive);
    EXPECT_TRUE(weak.lock().isNull());
    EXPECT_TRUE(other.lock().isNull());
    EXPECT_TRUE(RCWeakPtr<Base>().lock().isNull());
    EXPECT_TRUE(RCWeakPtr<Base>(RCShdPtr<Base>()).lock().isNull());
}

// An object in whose destructor a weak reference to it is asked for an owner.
class Curious : public RCBase {
public:
    explicit Curious(bool& revived) : _revived(revived) {}
    ~Curious() override { _revived = !weak.lock().isNull(); }
    RCWeakPtr<Curious> weak;

private:
    bool& _revived;
};

TEST(RCWeakPtr, GivesNoOwnerWhileTheObjectDies) {
    bool revived = true;
    RCShdPtr<Curious> owner = RCShdPtr<Curious>::create(revived);
    owner->weak = RCWeakPtr<Curious>(owner);
    owner.reset();
    EXPECT_FALSE(revived);
}

TEST(RCWeakPtr, SurvivesOwnersThatLetGoWhileOthersLock) {
    constexpr int threads = 4;
    constexpr int rounds = 500;
    std::vector<RCShdPtr<Base>> owners(threads);
    std::vector<RCWeakPtr<Base>> weak(1);
    std::barrier step(threads);
    auto const work = [&](std::size_t index) {
        for (int round = 0; round < rounds; ++round) {
            if (index == 0) {
                RCShdPtr<Base> const object = RCShdPtr<Base>::create();
                std::fill(owners.begin(), owners.end(), object);
                weak[0] = RCWeakPtr<Base>(object);
            }
            step.arrive_and_wait();
            owners[index].reset();
            if (RCShdPtr<Base> const locked = weak[0].lock(); !locked.isNull()) {
                EXPECT_EQ(7, locked->value);
            }
            step.arrive_and_wait();
        }
    };
    std::vector<std::jthread> pool;
    for (std::size_t index = 0; index < threads; ++index)
        pool.emplace_back(work, index);
    pool.clear();
    EXPECT_EQ(0, Base::alive);
}

} // namespace
