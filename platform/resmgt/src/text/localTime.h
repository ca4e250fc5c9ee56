#pragma once

#include <ctime>

namespace Ko {

/// The local date and time of day, in the time zone of the machine. Any thread.
[[nodiscard]] std::tm localTime(std::time_t time);

} // namespace Ko
