#pragma once

#include <ctime>

namespace Ko {

/// The calendar of the machine's time zone at a point in time. Any thread.
std::tm localTime(std::time_t time);

} // namespace Ko
