#include "resmgt/liDate.h"

#include "base/assertions.h"
#include "resmgt/src/text/localTime.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\liDate"};
constexpr std::array<char const*, 3> formats{"%Y-%m-%d", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"};
constexpr int withOffset = 2;

// Hours and minutes before (+) or after (-) UTC. Not by `strftime`, which on some systems writes the zone's name for it.
LiString offsetOf(std::tm const& calendar, std::chrono::sys_seconds time) {
    using namespace std::chrono;
    year_month_day const date(year(calendar.tm_year + 1900), month(static_cast<unsigned>(calendar.tm_mon + 1)),
        day(static_cast<unsigned>(calendar.tm_mday)));
    seconds const ofDay = hours(calendar.tm_hour) + minutes(calendar.tm_min) + seconds(calendar.tm_sec);
    auto const offset = duration_cast<minutes>(sys_days(date) + ofDay - time).count();
    auto const size = std::abs(offset);
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%c%02d%02d", offset < 0 ? '-' : '+', static_cast<int>(size / 60),
        static_cast<int>(size % 60));
    return text.data();
}

} // namespace

LiString LiDateFormat::format(LiDate const& date, int format) {
    source.require(format >= 0 && format < static_cast<int>(formats.size()), "format >= 0 && format < 3");
    // Rounded down, also before 1970, where `to_time_t` alone rounds up.
    auto const seconds = std::chrono::floor<std::chrono::seconds>(date.getTime());
    std::tm const calendar = localTime(LiDate::Clock::to_time_t(seconds));
    std::array<char, 64> text;
    LiString result(
        text.data(), std::strftime(text.data(), text.size(), formats[static_cast<std::size_t>(format)], &calendar));
    return format == withOffset ? result + offsetOf(calendar, seconds) : result;
}

} // namespace Ko
