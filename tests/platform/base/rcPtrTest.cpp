#include "base/exBase.h"
#include "base/rcShdPtr.h"
#include "base/rcWeakPtr.h"
#include "tests/support/thrown.h"

#include <barrier>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;

struct Base : RCBase {
    static inline std::atomic<int> alive{0};
    Base() { ++alive; }
    ~Base() override { --alive; }
    int value = 7;
};
struct Derived : Base {};

TEST(RCShdPtr, SharesOwnershipAcrossTypesAndDeletesOnce) {
    {
        RCShdPtr<Derived> const derived = RCShdPtr<Derived>::create();
        RCShdPtr<Base> base = derived;
        RCShdPtr<Base const> constant = base;
        EXPECT_EQ(3u, derived->getReferenceCount());
        EXPECT_TRUE(constant == base.dynamicCast<Derived>());
        RCShdPtr<Base> moved = std::move(base);
        EXPECT_TRUE(base.isNull());
        EXPECT_EQ(3u, derived->getReferenceCount());
        RCShdPtr<Base>& self = moved;
        moved = self;
        EXPECT_EQ(7, moved->value);
    }
    EXPECT_EQ(0, Base::alive);
}

TEST(RCShdPtr, ThrowsForANullPointerAndNamesTheType) {
    auto const error = KoTest::caught<ExNullPtr>([] { static_cast<void>(RCShdPtr<Derived>()->value); });
    EXPECT_NE(std::string::npos, error.getReason().find("Derived"));
}

TEST(RCWeakPtr, NeitherKeepsNorRevivesItsObject) {
    RCShdPtr<Derived> owner = RCShdPtr<Derived>::create();
    RCWeakPtr<Base> const weak(owner);
    EXPECT_TRUE(weak.lock() == owner);
    EXPECT_EQ(1u, owner->getReferenceCount());
    owner.reset();
    EXPECT_EQ(0, Base::alive);
    EXPECT_TRUE(weak.lock().isNull());
    EXPECT_TRUE(RCWeakPtr<Base>(RCShdPtr<Base>()).lock().isNull());
}

TEST(RCWeakPtr, GivesNoOwnerWhileTheObjectDies) {
    struct Curious : RCBase {
        ~Curious() override { EXPECT_TRUE(weak.lock().isNull()); }
        RCWeakPtr<Curious> weak;
    };
    RCShdPtr<Curious> owner = RCShdPtr<Curious>::create();
    owner->weak = RCWeakPtr<Curious>(owner);
    owner.reset();
}

// The state between the release of the last owner and the deletion, as another thread may find it.
TEST(RCWeakPtr, AddsNoOwnerToAnObjectWithoutOwners) {
    Base* const object = std::make_unique<Base>().release();
    auto const state = RCWeakState::of(object);
    EXPECT_FALSE(state->retain());
    RCShdPtr<Base> const owner(object);
    EXPECT_TRUE(state->retain());
    object->removeReference();
}

TEST(RCWeakPtr, CanBeLockedWhileOtherThreadsReleaseTheLastOwners) {
    constexpr int threads = 4, rounds = 500;
    std::vector<RCShdPtr<Base>> owners(threads);
    RCWeakPtr<Base> weak;
    std::barrier step(threads);
    auto const work = [&](std::size_t index) {
        for (int round = 0; round < rounds; ++round) {
            if (index == 0) {
                RCShdPtr<Base> const object = RCShdPtr<Base>::create();
                std::fill(owners.begin(), owners.end(), object);
                weak = RCWeakPtr<Base>(object);
            }
            step.arrive_and_wait();
            owners[index].reset();
            RCShdPtr<Base> const locked = weak.lock();
            EXPECT_EQ(7, locked.isNull() ? 7 : locked->value);
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
