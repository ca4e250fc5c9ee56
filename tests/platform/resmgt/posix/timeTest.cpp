#include "base/exBase.h"
#include "resmgt/liDate.h"
#include "variables.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(LiDate, IsFormattedInTheTimeZoneOfTheMachine) {
    LiDate const date(LiDate::Clock::from_time_t(1351383000)); // the night at the end of summer time
    constexpr char const* central = "CET-1CEST,M3.5.0,M10.5.0/3";
    for (auto const& [zone, format, expected] : std::vector<std::tuple<char const*, int, char const*>>{
             {"UTC0", 0, "2012-10-28"}, {central, 1, "2012-10-28 02:10:00"}, {central, 2, "2012-10-28T02:10:00+0200"},
             {"HST10", 0, "2012-10-27"}, {"HST10", 2, "2012-10-27T14:10:00-1000"}}) {
        KoTest::setVariable("TZ", zone);
        ::tzset();
        EXPECT_EQ(expected, LiDateFormat::format(date, format)) << zone;
    }
    EXPECT_THROW(static_cast<void>(LiDateFormat::format(date, 3)), ExAssertionFailed);
    EXPECT_THROW(static_cast<void>(LiDateFormat::format(date, -1)), ExAssertionFailed);
    LiDate const beforeTheEpoch(LiDate::Clock::time_point(std::chrono::milliseconds(-1)));
    EXPECT_EQ("1969-12-31T13:59:59-1000", LiDateFormat::format(beforeTheEpoch, 2)) << "rounded down";
    EXPECT_LE(LiDate(LiDate::Clock::from_time_t(1700000000)), LiDate()) << "the present time by default";
}

} // namespace
