#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// Where the framework is installed.
class KO_BASE_API InPaths {
public:
    /// The directory that the environment variable `KO_INSTALL_DIR` names, else the parent of the folder that libKObase
    /// was loaded from; where that is the system's own folder for libraries, `koframework8` in it. Holds `messages/` and
    /// `plugins/`.
    static std::string getInstallDir();
};

} // namespace Ko
