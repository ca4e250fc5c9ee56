#include "resmgt/liDate.h"

#include "base/assertions.h"
#include "resmgt/src/text/localTime.h"

#include <array>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\liDate"};
constexpr std::array<char const*, 3> formats{"%Y-%m-%d", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S%z"};

} // namespace

LiString LiDateFormat::format(LiDate const& date, int format) {
    source.require(format >= 0 && format < static_cast<int>(formats.size()), "format >= 0 && format < 3");
    // Rounded down, also before 1970, where `to_time_t` alone rounds up.
    auto const seconds = std::chrono::floor<std::chrono::seconds>(date.getTime());
    std::tm const calendar = localTime(LiDate::Clock::to_time_t(seconds));
    std::array<char, 64> text;
    return {text.data(), std::strftime(text.data(), text.size(), formats[static_cast<std::size_t>(format)], &calendar)};
}

} // namespace Ko
