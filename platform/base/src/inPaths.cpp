#include "base/inPaths.h"

#include "base/src/libraryPath.h"

#include <cstdlib>
#include <filesystem>

namespace Ko {

std::string InPaths::getInstallDir() {
    if (char const* const directory = std::getenv("KO_INSTALL_DIR"); directory && *directory) return directory;
    auto const directory = (std::filesystem::path(baseLibraryPath()).parent_path() / KO_HOME).lexically_normal();
    return (directory.has_filename() ? directory : directory.parent_path()).string();
}

} // namespace Ko
