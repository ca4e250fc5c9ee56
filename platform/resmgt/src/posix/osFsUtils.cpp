#include "resmgt/osFsUtils.h"

#include "resmgt/osFile.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <system_error>

namespace Ko {

namespace {

struct Closer {
    void operator()(DIR* stream) const noexcept { ::closedir(stream); }
};

[[noreturn]] void throwUnreadable(OsFilePath const& directory, LiString const& problem, int line = __builtin_LINE()) {
    throw OsFileEx::ExInvalidPath("resmgt\\src\\osFsUtils", line, "OsFsUtils::getChildren", directory, problem);
}

[[noreturn]] void throwUnreadable(OsFilePath const& directory, int error, int line = __builtin_LINE()) {
    throwUnreadable(directory, std::generic_category().message(error), line);
}

bool isChild(std::string_view name) {
    return name != "." && name != "..";
}

} // namespace

OsFilePath OsFsUtils::getAbsolute(OsFilePath const& path) {
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::current_path(error);
    if (path.isAbsolute() || error) return path;
    for (std::filesystem::path const& segment : std::filesystem::path(path.getPath()))
        if (segment != ".") absolute /= segment;
    return absolute.string();
}

Vector<OsFilePath> OsFsUtils::getChildren(OsFilePath const& directory, OsWildcardFilter const& filter) {
    if (directory.hasZeroByte()) throwUnreadable(directory.getPath().c_str(), "It contains a zero byte");
    std::unique_ptr<DIR, Closer> const stream(::opendir(directory.getPath().c_str()));
    if (!stream) throwUnreadable(directory, errno);
    Vector<OsFilePath> children;
    errno = 0;
    while (dirent const* const entry = ::readdir(stream.get())) {
        if (isChild(entry->d_name) && filter.matches(entry->d_name)) children.push_back(directory + entry->d_name);
        errno = 0;
    }
    if (errno != 0) throwUnreadable(directory, errno);
    std::sort(children.begin(), children.end());
    return children;
}

} // namespace Ko
