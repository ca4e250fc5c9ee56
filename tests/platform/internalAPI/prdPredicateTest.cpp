#include "internalAPI/prdPredicate.h"
#include "base/exBase.h"
#include "internalAPI/prdPredicate.imp.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using Predicate = PrdPredicate<int>;
using Implementation = PrdPredicateImp<int>;
using Children = PrdCompositePredicateImp<int>::Children;

/// Tests whether a number is at least another one; counts the tests.
struct AtLeast : Implementation {
    AtLeast(int itsLeast, int& itsAsked) : least(itsLeast), asked(itsAsked) {}
    bool test(int const& number) const override { return ++asked, number >= least; }
    int least;
    int& asked;
};

class PrdPredicateTest : public testing::Test {
protected:
    Predicate atLeast(int least, int& asked) { return Predicate(RCShdPtr<AtLeast>::create(least, asked)); }

    int askedFirst = 0, askedSecond = 0;
    Predicate const five = atLeast(5, askedFirst);
    Predicate const nine = atLeast(9, askedSecond);
};

TEST_F(PrdPredicateTest, CombinesAndStopsWhenTheResultIsKnown) {
    for (auto const& [name, predicate, number, expected, firstTimes, secondTimes] :
        std::vector<std::tuple<char const*, Predicate, int, bool, int, int>>{{"or, first", five || nine, 5, true, 1, 0},
            {"or, second", nine || five, 5, true, 1, 1}, {"and, both", five & nine, 9, true, 1, 1},
            {"and, only first", five & nine, 5, false, 1, 1}, {"and, not first", five & nine, 4, false, 1, 0},
            {"not or", !(five || nine), 4, true, 1, 1}, {"not all", !Predicate::all(), 0, false, 0, 0}}) {
        askedFirst = askedSecond = 0;
        EXPECT_EQ(expected, predicate(number)) << name;
        EXPECT_EQ(firstTimes, askedFirst) << name;
        EXPECT_EQ(secondTimes, askedSecond) << name;
    }
}

TEST_F(PrdPredicateTest, NeverHoldsWithoutChildrenOrAnImplementation) {
    EXPECT_FALSE(Predicate(RCShdPtr<PrdOrPredicateImp<int>>::create(Children())).test(1));
    EXPECT_FALSE(Predicate(RCShdPtr<PrdAndPredicateImp<int>>::create(Children())).test(1));
    EXPECT_FALSE(Predicate(RCShdPtr<Implementation>::create()).test(1));
}

TEST_F(PrdPredicateTest, RaisesWhenANullPredicateIsTested) {
    Predicate const null;
    EXPECT_THROW(static_cast<void>(null.test(1)), ExNullPtr);
    EXPECT_THROW(static_cast<void>((!null).test(1)), ExNullPtr);
    EXPECT_THROW(static_cast<void>((null || five).test(9)), ExNullPtr);
    EXPECT_THROW(static_cast<void>((five & null).test(9)), ExNullPtr);
    EXPECT_TRUE((five || null).test(9)) << "not asked";
    EXPECT_FALSE((five & null).test(1)) << "not asked";
}

} // namespace
