#include "base/inPaths.h"

#include "base/src/environment.h"
#include "base/src/libraryPath.h"
#include "base/utf8Path.h"

namespace Ko {

std::string InPaths::getInstallDir() {
    if (auto const directory = readEnvironment("KO_INSTALL_DIR"); directory && !directory->empty()) return *directory;
    auto const directory = (toPath(baseLibraryPath()).parent_path() / KO_HOME).lexically_normal();
    return toUtf8(directory.has_filename() ? directory : directory.parent_path());
}

} // namespace Ko
