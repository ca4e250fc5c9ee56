#pragma once

#include "resmgt/liString.h"

namespace Ko {

/// The system's words for an error of its functions, without a full stop.
/// @param subject stands in the few messages that have a place for one.
[[nodiscard]] LiString describeError(unsigned long error, LiString const& subject = {});

/// The same for the last error of this thread.
[[nodiscard]] LiString describeLastError();

} // namespace Ko
