#include "resmgt/osFile.h"

#include "resmgt/src/posix/descriptor.h"
#include "resmgt/src/posix/interruptedCall.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Ko {

namespace {

std::chrono::system_clock::time_point toTimePoint(timespec const& time) {
    auto const sinceEpoch = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

[[noreturn]] void fail(char const* function, OsFilePath const& path, LiString const& problem) {
    throw OsFileEx::ExInvalidPath("resmgt\\src\\posix\\osFile", __LINE__, function, path, problem);
}

void check(bool succeeded, char const* function, OsFilePath const& path) {
    if (!succeeded) fail(function, path, std::generic_category().message(errno));
}

constexpr char const* readName = "OsFile::read";
constexpr char const* replaceName = "OsFile::replace";

/// The file that takes the place of another one. Without `commit`, it goes.
class Replacement {
public:
    explicit Replacement(OsFilePath const& path) : _path(path), _target(followLinks(path)) {
        do {
            _name = _target.getPath() + "." + std::to_string(std::random_device()()) + ".part";
            _file = Descriptor(::open(_name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666));
        } while (!_file.isOpen() && errno == EEXIST);
        check(_file.isOpen(), replaceName, path);
    }
    ~Replacement() {
        if (!_isCommitted) ::unlink(_name.c_str());
    }
    Replacement(Replacement const&) = delete;
    Replacement& operator=(Replacement const&) = delete;

    void write(std::string_view content) const {
        while (!content.empty()) {
            ssize_t const written = untilDone([&] { return ::write(_file.get(), content.data(), content.size()); });
            check(written >= 0, replaceName, _path);
            content.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void commit() {
        struct stat replaced {};
        constexpr mode_t permissions = 07777;
        if (::stat(_target.getPath().c_str(), &replaced) == 0)
            check(::fchmod(_file.get(), replaced.st_mode & permissions) == 0, replaceName, _path);
        check(::fsync(_file.get()) == 0, replaceName, _path);
        check(std::rename(_name.c_str(), _target.getPath().c_str()) == 0, replaceName, _path);
        _isCommitted = true;
    }

private:
    static OsFilePath followLinks(OsFilePath path) {
        constexpr int mostLinks = 40; // as the system
        LiString target(4096, '\0');
        for (int links = 0; links < mostLinks; ++links) {
            ssize_t const length = ::readlink(path.getPath().c_str(), target.data(), target.size());
            if (length < 0) break;
            path = path.getDirectory() + OsFilePath(target.substr(0, static_cast<std::size_t>(length)));
        }
        return path;
    }

    OsFilePath _path;
    OsFilePath _target;
    LiString _name;
    Descriptor _file;
    bool _isCommitted = false;
};

} // namespace

std::optional<OsFile::Info> OsFile::getInfo(OsFilePath const& path) {
    struct stat status {};
    if (path.hasZeroByte() || ::stat(path.getPath().c_str(), &status) != 0) return std::nullopt;
    return Info{S_ISDIR(status.st_mode), static_cast<std::uint64_t>(status.st_size), toTimePoint(status.st_mtim)};
}

LiString OsFile::read(OsFilePath const& path) {
    if (path.hasZeroByte()) fail(readName, path, "the path contains a zero byte");
    Descriptor const file(::open(path.getPath().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    check(file.isOpen() && ::fstat(file.get(), &status) == 0, readName, path);
    if (!S_ISREG(status.st_mode)) fail(readName, path, "not an ordinary file");
    LiString content;
    std::array<char, 16384> piece;
    for (;;) {
        ssize_t const length = untilDone([&] { return ::read(file.get(), piece.data(), piece.size()); });
        check(length >= 0, readName, path);
        if (length == 0) return content;
        content.append(piece.data(), static_cast<std::size_t>(length));
    }
}

void OsFile::replace(OsFilePath const& path, LiString const& content) {
    if (path.hasZeroByte()) fail(replaceName, path, "the path contains a zero byte");
    if (auto const info = getInfo(path); info && info->isDirectory) fail(replaceName, path, "a directory");
    Replacement file(path);
    file.write(content);
    file.commit();
}

} // namespace Ko
