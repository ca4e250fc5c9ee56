#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

namespace Ko {

/// A job's times and progress at one moment, for display.
class KO_FRAMEWORK_API BgJobStatistics {
public:
    /// Takes the texts as they are to be shown.
    BgJobStatistics(LiString submitted, LiString started, LiString ended, float progress);
    BgJobStatistics(BgJobStatistics const&);
    BgJobStatistics& operator=(BgJobStatistics const&);
    virtual ~BgJobStatistics();

    /// As "2026-11-21 17:04:09", local time; here and below.
    virtual LiString submitted() const;
    /// Empty before the job was started.
    virtual LiString started() const;
    /// Empty until the job has ended its work; one that was stopped or failed on the way stays without.
    virtual LiString ended() const;
    /// As the protocol reported it, not limited to [0, 1].
    virtual float progress() const;

private:
    LiString _submitted;
    LiString _started;
    LiString _ended;
    float _progress;
};

} // namespace Ko
