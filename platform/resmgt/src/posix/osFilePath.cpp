#include "resmgt/osFilePath.h"

#include "resmgt/src/files/pathRoot.h"

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

std::size_t pathRootLength(std::string_view path) noexcept {
    return path.starts_with('/') ? 1 : 0;
}

} // namespace Ko
