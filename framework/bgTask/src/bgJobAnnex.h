#pragma once

#include "framework/bgTask/bgJob.h"

namespace Ko {

/// The data of a job that most jobs do not need: reports, pauses, the reason of its end, the result. Made on first use,
/// guarded by the lock of the job.
struct BgJob::Annex {
    /// The reports of which observers are not notified yet.
    struct News {
        bool isPosted = false;
        bool hasPhase = false;
        bool hasUnits = false;
        bool hasPause = false;
        Vector<BgMessage> messages;
        std::size_t numOmitted = 0;
    };

    News news;
    LiString phase;
    BgUnits units;
    LiString reason;
    std::shared_ptr<void> result;
    std::type_info const* resultType = nullptr;
    BgJobTimes::Time pausedSince;
    BgJobTimes::Duration paused{};
};

} // namespace Ko
