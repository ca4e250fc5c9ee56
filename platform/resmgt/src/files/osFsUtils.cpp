#include "resmgt/osFsUtils.h"

#include "resmgt/osFile.h"

namespace Ko {

bool OsFsUtils::fileExists(OsFilePath const& path) {
    return OsFile::getInfo(path).has_value();
}

bool OsFsUtils::isDirectory(OsFilePath const& path) {
    auto const info = OsFile::getInfo(path);
    return info && info->isDirectory;
}

} // namespace Ko
