#pragma once

#include "framework/frameworkApi.h"

#include <chrono>
#include <optional>

namespace Ko {

/// The times of a job at one point in time.
class KO_FRAMEWORK_API BgJobTimes {
public:
    /// A point in time, as in `LiDate`.
    using Time = std::chrono::system_clock::time_point;
    /// A length of time.
    using Duration = std::chrono::system_clock::duration;

    /// When the job was made.
    Time submitted;
    /// When a worker took the job.
    std::optional<Time> started;
    /// When the job completed its work; none for a job that ended with less progress than 1.
    std::optional<Time> ended;
    /// How long the job was paused after its start.
    Duration paused{};

    /// An estimate of the time that a job with this progress still needs: the rest is as fast as the part that is done.
    /// @returns nothing before the start and unless the progress is above 0 and at most 1.
    [[nodiscard]] std::optional<Duration> estimateRemaining(float progress, Time now) const;
};

} // namespace Ko
