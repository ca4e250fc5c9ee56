#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

namespace Ko {

/// The times and the progress of a job at one point in time, for display.
class KO_FRAMEWORK_API BgJobStatistics {
public:
    /// Takes the texts as they are shown.
    BgJobStatistics(LiString submitted, LiString started, LiString ended, float progress);
    BgJobStatistics(BgJobStatistics const&);
    BgJobStatistics& operator=(BgJobStatistics const&);
    virtual ~BgJobStatistics();

    /// When the job was made: "2026-11-21 17:04:09", local time.
    [[nodiscard]] virtual LiString submitted() const;
    /// When a worker took the job, in the same format; empty before.
    [[nodiscard]] virtual LiString started() const;
    /// When the job completed its work, in the same format. Empty before, and for a job that ended with less progress than 1.
    [[nodiscard]] virtual LiString ended() const;
    /// The value that the protocol reported, not limited to [0, 1]; NaN if it is unknown.
    [[nodiscard]] virtual float progress() const;

private:
    LiString _submitted;
    LiString _started;
    LiString _ended;
    float _progress;
};

} // namespace Ko
