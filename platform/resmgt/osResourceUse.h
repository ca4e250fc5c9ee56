#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace Ko {

/// What a program has used of the machine, up to its end.
struct OsResourceUse {
    /// The time of the processors, also that of its own children for which it waited.
    std::chrono::microseconds userTime{0};
    /// The same, inside the system.
    std::chrono::microseconds systemTime{0};
    /// Bytes of physical memory, at least: a peak of a program that is smaller than this process may be missed shortly
    /// before the end. None where the system does not tell it.
    std::optional<std::uint64_t> peakMemory;
};

} // namespace Ko
