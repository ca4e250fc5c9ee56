#pragma once

#include "base/assertions.h"
#include "framework/bgTask/src/bgLog.h"

#include <iostream>

namespace Ko {

/// The source text under which all parts of the external-process job raise their errors.
inline constexpr char const* bgProcessSourceName = "framework\\bgTask\\src\\bgProcessWindows";
inline constexpr AssertionSource bgProcessSource{bgProcessSourceName};

/// Writes to the package's log group; to standard output while that does not exist.
template <class MakeText>
void logProcess(int level, MakeText const& makeText) {
    if (BgLog::group.exists())
        BgLog::group.log(level, makeText);
    else
        std::cout << makeText() << '\n';
}

} // namespace Ko
