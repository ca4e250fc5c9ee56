#pragma once

#include <cerrno>

namespace Ko {

/// Repeats a call of the system that a signal of the host interrupts.
template <class Call>
auto untilDone(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace Ko
