#include "base/inPaths.h"

#include "base/src/libraryPath.h"

#include <cstdlib>
#include <filesystem>

namespace Ko {

std::string InPaths::getInstallDir() {
    if (char const* const directory = std::getenv("KO_INSTALL_DIR"); directory && *directory) return directory;
    return std::filesystem::path(baseLibraryPath()).parent_path().parent_path().string();
}

} // namespace Ko
