#include "resmgt/osFilePath.h"

namespace Ko {

char OsFilePath::getSeparator() noexcept {
    return '/';
}

char OsFilePath::getMultiPathSeparator() noexcept {
    return ':';
}

bool OsFilePath::isSeparator(char character) noexcept {
    return character == '/';
}

bool OsFilePath::isAbsolute() const noexcept {
    return !_path.empty() && isSeparator(_path.front());
}

int OsFilePath::compare(OsFilePath const& other) const noexcept {
    return _path.compare(other._path);
}

} // namespace Ko
