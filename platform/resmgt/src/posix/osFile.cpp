#include "resmgt/osFile.h"

#include <sys/stat.h>

namespace Ko {

namespace {

std::chrono::system_clock::time_point toTimePoint(timespec const& time) {
    auto const sinceEpoch = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

} // namespace

std::optional<OsFile::Info> OsFile::getInfo(OsFilePath const& path) {
    struct stat status {};
    if (path.hasZeroByte() || ::stat(path.getPath().c_str(), &status) != 0) return std::nullopt;
    return Info{S_ISDIR(status.st_mode), static_cast<std::uint64_t>(status.st_size), toTimePoint(status.st_mtim)};
}

} // namespace Ko
