#include "resmgt/liDate.h"
#include "base/exBase.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiDate, IsFormattedInTheTimeZoneOfTheMachine) {
    LiDate const date(LiDate::Clock::from_time_t(1351383000)); // in the night when summer time ended
    constexpr char const* central = "CET-1CEST,M3.5.0,M10.5.0/3";
    struct {
        char const* zone;
        int format;
        char const* expected;
    } const rows[] = {{"UTC0", 0, "2012-10-28"}, {central, 1, "2012-10-28 02:10:00"},
        {central, 2, "2012-10-28T02:10:00+0200"}, {"HST10", 0, "2012-10-27"}, {"HST10", 2, "2012-10-27T14:10:00-1000"}};
    for (auto const& row : rows) {
        ::setenv("TZ", row.zone, 1);
        ::tzset();
        EXPECT_EQ(row.expected, LiDateFormat::format(date, row.format)) << row.zone;
    }
    EXPECT_THROW(LiDateFormat::format(date, 3), ExAssertionFailed);
    EXPECT_THROW(LiDateFormat::format(date, -1), ExAssertionFailed);
    EXPECT_LE(LiDate(LiDate::Clock::from_time_t(1700000000)), LiDate()) << "now, unless told otherwise";
}

} // namespace
