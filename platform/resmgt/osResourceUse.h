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
    /// The most physical memory that it used at a time, in bytes. Exact for a program that was larger than this process at
    /// the launch; for a smaller one, the last figure that was noted while it ran, and nothing when none was.
    std::optional<std::uint64_t> peakMemory;
};

} // namespace Ko
