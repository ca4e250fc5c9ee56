#include "resmgt/liDate.h"
#include "base/exBase.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiDate, IsFormattedInTheTimeZoneOfTheMachine) {
    LiDate const date(LiDate::Clock::from_time_t(1351383000)); // in the night when summer time ended
    struct Row {
        char const* zone;
        int format;
        char const* expected;
    };
    for (Row const& row : {Row{"UTC0", 0, "2012-10-28"}, Row{"UTC0", 1, "2012-10-28 00:10:00"},
             Row{"CET-1CEST,M3.5.0,M10.5.0/3", 1, "2012-10-28 02:10:00"},
             Row{"CET-1CEST,M3.5.0,M10.5.0/3", 2, "2012-10-28T02:10:00+0200"}, Row{"HST10", 0, "2012-10-27"},
             Row{"HST10", 2, "2012-10-27T14:10:00-1000"}}) {
        ::setenv("TZ", row.zone, 1);
        ::tzset();
        EXPECT_EQ(row.expected, LiDateFormat::format(date, row.format)) << row.zone;
    }
    EXPECT_THROW(LiDateFormat::format(date, 3), ExAssertionFailed);
    EXPECT_THROW(LiDateFormat::format(date, -1), ExAssertionFailed);
}

TEST(LiDate, IsNowUnlessToldOtherwise) {
    LiDate const before;
    LiDate const after;
    EXPECT_LE(LiDate(LiDate::Clock::from_time_t(1700000000)), before);
    EXPECT_LE(before, after);
}

} // namespace
