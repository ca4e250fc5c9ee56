#include "resmgt/src/text/localTime.h"

namespace Ko {

std::tm localTime(std::time_t time) {
    std::tm calendar{};
    ::localtime_s(&calendar, &time);
    return calendar;
}

} // namespace Ko
