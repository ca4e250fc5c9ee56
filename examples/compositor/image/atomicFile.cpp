#include "image/atomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace compositor {

namespace {

namespace fs = std::filesystem;

constexpr int mostLinks = 40;

fs::path folderOf(fs::path const& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// The target of a chain of symbolic links. It need not exist.
fs::path followLinks(fs::path path) {
    std::error_code error;
    for (int links = 0; links < mostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        fs::path const target = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / target;
    }
    return path;
}

std::string pathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

} // namespace

fs::path temporaryPathBeside(fs::path const& path, std::string const& extension) {
    std::random_device random;
    for (;;) {
        fs::path candidate = path;
        candidate += "." + std::to_string(random()) + extension;
        std::error_code error;
        if (!fs::exists(fs::symlink_status(candidate, error))) return candidate;
    }
}

AtomicFile::AtomicFile(fs::path path) : _path(followLinks(std::move(path))) {
    if (_path.native().find('\0') != std::string::npos)
        throw ImageError(std::string(_path.c_str()) + " cannot be written: its name contains a zero byte");
    std::error_code error;
    if (fs::exists(_path, error) && !fs::is_regular_file(_path, error))
        throw ImageError(_path.string() + " cannot be written: it is not a file");
    open();
}

AtomicFile::~AtomicFile() {
    std::error_code ignored;
    if (!_temporary.empty()) fs::remove(_temporary, ignored);
}

// The file gets a name at once if the system cannot create files without one, or cannot name them later.
void AtomicFile::open() {
    constexpr mode_t mode = 0666;
    int descriptor = ::open(folderOf(_path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    bool const isUnnamed = descriptor >= 0 && ::access(pathOfDescriptor(descriptor).c_str(), F_OK) == 0;
    if (descriptor >= 0 && !isUnnamed) ::close(descriptor);
    if (!isUnnamed) {
        fs::path const temporary = temporaryPathBeside(_path, ".part");
        descriptor = ::open(temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
        check(descriptor >= 0);
        _temporary = temporary;
    }
    _file.reset(::fdopen(descriptor, "wb"));
    check(_file != nullptr);
}

void AtomicFile::write(std::span<std::byte const> bytes) {
    check(std::fwrite(bytes.data(), 1, bytes.size(), _file.get()) == bytes.size());
}

void AtomicFile::rewind() {
    check(std::fseek(_file.get(), 0, SEEK_SET) == 0);
}

void AtomicFile::commit() {
    check(std::fflush(_file.get()) == 0);
    int const descriptor = ::fileno(_file.get());
    struct stat replaced {};
    constexpr mode_t permissions = 07777;
    if (::stat(_path.c_str(), &replaced) == 0) check(::fchmod(descriptor, replaced.st_mode & permissions) == 0);
    check(::fsync(descriptor) == 0);
    if (_temporary.empty()) giveName();
    check(std::rename(_temporary.c_str(), _path.c_str()) == 0);
    _temporary.clear();
    check(std::fclose(_file.release()) == 0);
}

void AtomicFile::giveName() {
    fs::path temporary = temporaryPathBeside(_path, ".part");
    std::string const source = pathOfDescriptor(::fileno(_file.get()));
    check(::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) == 0);
    _temporary = std::move(temporary);
}

void AtomicFile::check(bool succeeded) const {
    if (!succeeded) fail(errno);
}

void AtomicFile::fail(int error) const {
    throw ImageError(_path.string() + " cannot be written: " + std::generic_category().message(error));
}

} // namespace compositor
