#pragma once

#include "base/exBase.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// Reports plug-ins that fail: to the user as a warning, and in the log. Any thread.
class PimMessages {
public:
    /// Subscribes the messages.
    static void initialize();

    /// The plug-in was refused before its library was opened.
    static void refused(OsFilePath const& path, ExBase const& error);
    /// The library could not be opened.
    static void loadFailed(OsFilePath const& path, ExBase const& error);
    /// The library was opened, and one of its packages could not be initialised.
    static void initFailed(OsFilePath const& path, ExBase const& error);
};

} // namespace Ko
