#pragma once

#include "pluginAPI/pluginAPIApi.h"

namespace Ko {

/// The thread on which the application works with documents, commands, actions and the clipboard.
class KO_PLUGINAPI_API PiAppThread {
public:
    /// Whether the calling thread is the one that initialised the framework; false before that.
    static bool isCurrent() noexcept;
};

} // namespace Ko
