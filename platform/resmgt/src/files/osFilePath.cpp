#include "resmgt/osFilePath.h"

#include "resmgt/src/files/pathRoot.h"

#include <algorithm>

namespace Ko {

OsFilePath::OsFilePath(LiString path) : _path(std::move(path)) {
    std::size_t const root = pathRootLength(_path);
    while (_path.size() > root && isSeparator(_path.back()))
        _path.pop_back();
}

OsFilePath OsFilePath::getDirectory() const {
    std::size_t const length = _path.size() - name().size();
    return _path.substr(0, length);
}

OsFilePath OsFilePath::getFileName() const {
    return LiString(name());
}

LiString OsFilePath::getBaseName() const {
    return LiString(name().substr(0, extensionDot()));
}

LiString OsFilePath::getExtension() const {
    std::size_t const dot = extensionDot();
    return dot == LiString::npos ? LiString() : LiString(name().substr(dot + 1));
}

OsFilePath OsFilePath::withExtension(LiString const& extension) const {
    return _path + '.' + extension;
}

OsFilePath operator+(OsFilePath const& directory, OsFilePath const& path) {
    if (directory.isEmpty() || path.isAbsolute()) return path;
    if (path.isEmpty()) return directory;
    LiString joined = directory._path;
    joined.reserve(joined.size() + 1 + path._path.size());
    if (!OsFilePath::isSeparator(joined.back())) joined += OsFilePath::getSeparator();
    return joined += path._path;
}

std::string_view OsFilePath::name() const noexcept {
    auto const end = std::find_if(_path.rbegin(), _path.rend(), &isSeparator);
    return std::string_view(_path).substr(
        std::max(static_cast<std::size_t>(_path.rend() - end), pathRootLength(_path)));
}

// The position in the file name; npos for a name without an extension, such as ".", ".." and ".profile".
std::size_t OsFilePath::extensionDot() const noexcept {
    std::string_view const fileName = name();
    std::size_t const dot = fileName.rfind('.');
    return dot == 0 || fileName == ".." ? LiString::npos : dot;
}

} // namespace Ko
