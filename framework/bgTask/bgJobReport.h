#pragma once

#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <cstdint>

namespace Ko {

/// A message of a job to people, while it runs.
struct BgMessage {
    /// How important the message is. A failure is not a message: the protocol throws then.
    enum class Severity { Information, Warning };

    /// How important the message is.
    Severity severity = Severity::Information;
    /// The message, for display.
    LiString text;
};

/// Progress in countable units, such as 30 of 200 pictures.
struct BgUnits {
    /// How many are done.
    std::int64_t done = 0;
    /// How many there are; 0 while that is unknown.
    std::int64_t total = 0;
    /// What is counted, for display: "pictures", "bytes". Empty if the job has not reported units.
    LiString unit;
};

} // namespace Ko
