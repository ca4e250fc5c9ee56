#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// The place where the framework is installed.
class KO_BASE_API InPaths {
public:
    /// The installation directory, which holds `messages/` and `plugins/`: the one that the environment variable
    /// `KO_INSTALL_DIR` names, else the parent of the folder that libKObase was loaded from. A library in the system's own
    /// folder for libraries has the folder `koframework8` in it instead.
    [[nodiscard]] static std::string getInstallDir();
};

} // namespace Ko
