#pragma once

#include "base/inInitMgr.h"

namespace Ko {

/// The thread on which the application uses documents, commands, actions and the clipboard.
class PiAppThread {
public:
    /// Whether the calling thread is the one that initialised the framework; false before that.
    [[nodiscard]] static bool isCurrent() noexcept { return InInitMgr::isApplicationThread(); }
};

} // namespace Ko
