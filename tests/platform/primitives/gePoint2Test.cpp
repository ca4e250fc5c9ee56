#include "primitives/gePoint2.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;

TEST(GePoint2, AddsSubtractsAndComparesByCoordinate) {
    GePoint2<int> const a(5, 7), b(2, -1);
    EXPECT_EQ(GePoint2<int>(7, 6), a + b);
    EXPECT_EQ(GePoint2<int>(3, 8), a - b);
    EXPECT_NE(a, GePoint2<int>(5, 8));
    EXPECT_NE(a, GePoint2<int>(6, 7));
    std::ostringstream stream;
    stream << GePoint2<float>(1.5f, -2.0f);
    EXPECT_EQ("(1.5, -2)", stream.str());
}

} // namespace
