#include "framework/bgTask/bgJobTimes.h"

#include <algorithm>

namespace Ko {

std::optional<BgJobTimes::Duration> BgJobTimes::estimateRemaining(float progress, Time now) const {
    // Negated, so that it holds for NaN too.
    if (!started || !(progress > 0.0f && progress <= 1.0f)) return {};
    // The clock of the system may have been set back.
    Duration const worked = std::max(now - *started - paused, Duration::zero());
    double const share = (1.0 - static_cast<double>(progress)) / static_cast<double>(progress);
    double const remaining = static_cast<double>(worked.count()) * share;
    constexpr double longest = static_cast<double>(Duration::max().count()) / 2;
    return Duration(static_cast<Duration::rep>(std::min(remaining, longest)));
}

} // namespace Ko
