#pragma once

#include "framework/bgTask/bgJob.h"

namespace Ko {

/// The jobs that a job waits for before it is queued. It occupies no worker meanwhile.
struct BgAfter {
    /// What becomes of the waiting job if another one did not complete.
    enum class OnFailure {
        /// Failed if the other one failed, Stopped if it was stopped; `BgJob::getReason()` names the other one.
        End,
        /// Queued all the same.
        Run
    };

    /// The jobs to wait for. They may be submitted later, and may have ended.
    Vector<RCShdPtr<BgJob>> predecessors;
    /// What becomes of the waiting job if one of them did not complete.
    OnFailure onFailure = OnFailure::End;
};

} // namespace Ko
